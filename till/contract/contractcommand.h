#pragma once

#include "exitcode.h"

#include <contracts/cassette.h>
#include <contracts/driftrules.h>

#include <QHash>
#include <QString>

class QTextStream;
class RestClient;

namespace till {

/// tessaro-till contract: sends a cassette's requests to the emulator or to
/// a service and compares every answer with the recorded one by contract
/// (ContractComparer): one line per request, same or drifted with the path
/// of each differing field, then a summary.
///
/// Against a service other than the emulator only the read-only requests
/// (the token request and GETs) go out unless writes are allowed: an advice
/// note sent to a live service is a real return. Requests signed for the
/// gateway are not sent: their signature cannot be made again here.
class ContractCommand
{
public:
    struct Options
    {
        QString cassette;
        /// The service's base address; empty: an emulator in this process.
        QString against;
        /// The token address; empty: the emulator's, or against + "/token".
        QString tokenUrl;
        QString rulesFile;
        /// The emulator's settings (docs/emulator.md); only without against.
        QString emulatorSettings;
        /// A till's data folder whose "Tessaro:authorizationHeader" the token request carries.
        QString dataFolder;
        bool allowWrites = false;
    };

    ContractCommand(const Options &options, QTextStream *out, QTextStream *err);

    /// Passes without drift, fails with drift.
    ExitCode run();

private:
    /// Sends one recorded request; returns its line, and whether it drifted.
    QString verify(const tessaro::contracts::CassetteExchange &recorded, RestClient *client, bool *drifted);
    QString targetUrl(const tessaro::contracts::CassetteExchange &recorded, bool token) const;
    bool isTokenRequest(const tessaro::contracts::CassetteExchange &recorded) const;

    Options m_options;
    QTextStream *m_out;
    QTextStream *m_err;
    tessaro::contracts::Cassette m_cassette;
    tessaro::contracts::DriftRules m_rules;
    QString m_base;
    QString m_token;
    /// The "Authorization" of the token request; empty: the recorded one.
    QString m_authorization;
    /// The live values of the cassette's placeholders met so far (a token).
    QHash<QString, QString> m_secrets;
};

} // namespace till
