#pragma once

#include "client/interface.h"

#include <abstractdocument.h>
#include <documentcardrecord.h>
#include <session.h>
#include <singleton.h>
#include <support/logcapture.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

/// What the cart tests share: a client with a token at hand whose last
/// confirmed cart a test may read, cart answers as the service writes them,
/// and a key-by-key comparison of request bodies.
namespace carttest {

/// The client under test, its last confirmed cart open to the test.
class Client : public tessaro::Interface
{
public:
    Client() { setToken(QStringLiteral("tok-0")); }
    using Interface::lastCart;
};

/// One cart line as the service sends it.
inline QJsonObject line(int sequenceNumber, double quantity, double totalPriceGross = 10.0)
{
    return {{"sequenceNumber", sequenceNumber},
            {"artNo", QString::number(1000 + sequenceNumber)},
            {"quantity", quantity},
            {"prices", QJsonObject{{"totalPriceGross", totalPriceGross}}}};
}

/// A cart answer ("collecting") with \a items and \a extra keys.
inline QByteArray cart(const QJsonArray &items, const QJsonObject &extra = {})
{
    QJsonObject object{{"uuid", "c-1"}, {"status", "collecting"}, {"items", items}};
    for (auto it = extra.begin(); it != extra.end(); ++it)
        object.insert(it.key(), it.value());
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// Makes \a cardType's card record part of a new current document and returns it.
inline QSharedPointer<DocumentCardRecord> documentWithCard(int cardType = 27)
{
    const auto document = QSharedPointer<AbstractDocument>::create();
    const auto card = QSharedPointer<DocumentCardRecord>::create(cardType, QStringLiteral("2770000000001"));
    document->addCardRecord(card);
    Singleton<Session>::instance()->setCurrentDocument(document);
    return card;
}

/// The client's own info lines, without the REST client's line per exchange.
inline QStringList clientLines(const LogCapture &log, QtMsgType type = QtInfoMsg)
{
    static const QRegularExpression exchange(QStringLiteral("^(GET|POST) "));
    QStringList lines = log.texts(QStringLiteral("tessaro"), type);
    lines.removeIf([](const QString &line) { return exchange.match(line).hasMatch(); });
    return lines;
}

inline QString jsonText(const QJsonValue &value)
{
    return QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact)).chopped(1).mid(1);
}

/// Fails the test unless \a actual has exactly the keys of \a expected with
/// equal values; the message names the first key that differs.
inline void compareJson(const QJsonObject &actual, const QJsonObject &expected)
{
    QCOMPARE(actual.keys(), expected.keys());
    for (auto it = expected.begin(); it != expected.end(); ++it) {
        const QJsonValue value = actual.value(it.key());
        QVERIFY2(value == it.value(), qPrintable(QStringLiteral("\"%1\" is %2, expected %3")
                                                     .arg(it.key(), jsonText(value), jsonText(it.value()))));
    }
}

} // namespace carttest
