#pragma once

#include "emulator/emulator.h"

#include <testing/testhost.h>

#include <QString>

#include <memory>

/// A till whose client talks to the Tessaro service emulator over loopback.
///
/// The emulator serves on a thread of its own under "/api" with token
/// authentication, so the client fetches its token as it would from the
/// service. It knows one customer (card barcode 67812345678, 150 points), two
/// articles (4600000000012 "Молоко 1 л" at 89.90, code 1002 "Хлеб" at 45.50),
/// one invalid coupon (2559999999999), a message list "info" and a payload
/// "demo". The host's configuration points the client at it; \a extraIni is
/// appended to that configuration.
class CartEmulatorBed
{
public:
    static const QString customerCard;
    static const QString milkBarcode;
    static const QString breadCode;
    static const QString invalidCoupon;

    explicit CartEmulatorBed(const QString &extraIni = QString());
    ~CartEmulatorBed();
    CartEmulatorBed(const CartEmulatorBed &) = delete;
    CartEmulatorBed &operator=(const CartEmulatorBed &) = delete;

    tessaro::emulator::Emulator &emulator() { return m_emulator; }
    TestHost &host() { return *m_host; }

    /// The service's cart \a uuid as it stands.
    tessaro::emulator::Cart cart(const QString &uuid);
    /// How many requests to paths ending in \a pathEnd the emulator applied:
    /// answered with 200, or applied before their answer was lost.
    int applied(const QString &pathEnd);
    /// How many requests to paths ending in \a pathEnd arrived, whatever became of them.
    int received(const QString &pathEnd);

private:
    tessaro::emulator::Emulator m_emulator;
    std::unique_ptr<TestHost> m_host;
};
