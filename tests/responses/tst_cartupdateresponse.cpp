#include "cartaccessorrows.h"

#include "responses/cartupdateresponse.h"

#include <QJsonArray>
#include <QTest>

using tessaro::CartUpdateResponse;
using tessaro::Response;
using Rows = CartAccessorRows<CartUpdateResponse>;

namespace {

QJsonObject line(int sequenceNumber, double quantity)
{
    return {{QStringLiteral("sequenceNumber"), sequenceNumber}, {QStringLiteral("quantity"), quantity}};
}

} // namespace

class TestCartUpdateResponse : public QObject
{
    Q_OBJECT

private slots:
    void accessors_data();
    void accessors() { Rows::check(); }
    void status_data();
    void status();
    void conflictCodeCountsOnlyOutsideCollecting();
    void itemsInOrderAndNonObjectsEmpty();
    void totalQuantitySumsTheLines();
    void messagesTakeTheirTexts();
};

void TestCartUpdateResponse::accessors_data()
{
    Rows::addColumns();
    const QJsonValue text = QStringLiteral("5");
    Rows::add("uuid", &CartUpdateResponse::uuid, QStringLiteral("uuid"), QStringLiteral("c-1"), QStringLiteral("c-1"), 5,
              QString());
    Rows::add("statusCode", &CartUpdateResponse::statusCode, QStringLiteral("statusCode"), 3001, 3001, text, -1);
    Rows::add("pointsToRredeem", &CartUpdateResponse::pointsToRredeem, QStringLiteral("pointsToRredeem"), 120, 120, text, 0);
    Rows::add("totalItems", &CartUpdateResponse::totalItems, QStringLiteral("totalItems"), 4, 4, text, 0);
    Rows::add("totalQuantity", &CartUpdateResponse::totalQuantity, QStringLiteral("items"),
              QJsonArray{line(1, 1.5), line(2, 2)}, 3.5, QJsonObject{{QStringLiteral("quantity"), 3}}, 0.0);
    Rows::add("messages", &CartUpdateResponse::messages, QStringLiteral("messages"),
              QJsonArray{QJsonObject{{QStringLiteral("text"), QStringLiteral("Купон принят")}}},
              QStringList{QStringLiteral("Купон принят")}, QStringLiteral("Купон принят"), QStringList());
}

void TestCartUpdateResponse::status_data()
{
    QTest::addColumn<QJsonObject>("body");
    QTest::addColumn<int>("expected");
    const QString status = QStringLiteral("status");
    const QString code = QStringLiteral("statusCode");
    QTest::newRow("init") << QJsonObject{{status, QStringLiteral("init")}} << int(Response::Success);
    QTest::newRow("collecting") << QJsonObject{{status, QStringLiteral("collecting")}} << int(Response::Success);
    QTest::newRow("3V not available") << QJsonObject{{status, QStringLiteral("3V not available")}}
                                      << int(Response::ValidationUnavailable);
    QTest::newRow("3V validation error") << QJsonObject{{status, QStringLiteral("3V validation error")}}
                                         << int(Response::ValidationError);
    QTest::newRow("code 3001") << QJsonObject{{code, 3001}} << int(Response::CartUpdateConflict);
    QTest::newRow("other code") << QJsonObject{{code, 3002}} << int(Response::Success);
    QTest::newRow("case differs: the base decides") << QJsonObject{{status, QStringLiteral("Collecting")}}
                                                    << int(Response::Success);
    QTest::newRow("shift closed: the base decides") << QJsonObject{{status, QStringLiteral("The shift is closed")}}
                                                    << int(Response::ShiftClosed);
    QTest::newRow("empty: the base decides") << QJsonObject() << int(Response::IncorrectResponse);
}

void TestCartUpdateResponse::status()
{
    QFETCH(QJsonObject, body);
    QFETCH(int, expected);
    QCOMPARE(int(CartUpdateResponse(body).status()), expected);
}

void TestCartUpdateResponse::conflictCodeCountsOnlyOutsideCollecting()
{
    const QString code = QStringLiteral("statusCode");
    const QString status = QStringLiteral("status");
    QCOMPARE(CartUpdateResponse(QJsonObject{{status, QStringLiteral("collecting")}, {code, 3001}}).status(),
             Response::Success);
    QCOMPARE(CartUpdateResponse(QJsonObject{{status, QStringLiteral("closed")}, {code, 3001}}).status(),
             Response::CartUpdateConflict);
}

void TestCartUpdateResponse::itemsInOrderAndNonObjectsEmpty()
{
    const CartUpdateResponse reply(QJsonObject{{QStringLiteral("items"), QJsonArray{line(2, 1), 7, line(1, 3)}}});
    const QList<tessaro::Item> items = reply.items();
    QCOMPARE(items.size(), 3);
    QCOMPARE(items.at(0).sequenceNumber(), 2);
    QCOMPARE(items.at(1).json(), QJsonObject());
    QCOMPARE(items.at(2).sequenceNumber(), 1);
    QCOMPARE(items.at(2).json(), line(1, 3));
}

void TestCartUpdateResponse::totalQuantitySumsTheLines()
{
    const CartUpdateResponse reply(QJsonObject{{QStringLiteral("items"), QJsonArray{line(1, 0.25), line(2, -1), line(3, 2)}}});
    QCOMPARE(reply.totalQuantity(), 1.25);
    QCOMPARE(CartUpdateResponse(QJsonObject{{QStringLiteral("items"), QJsonArray()}}).totalQuantity(), 0.0);
}

void TestCartUpdateResponse::messagesTakeTheirTexts()
{
    const QJsonArray messages{QJsonObject{{QStringLiteral("text"), QStringLiteral("a")}},
                              QJsonObject{{QStringLiteral("code"), 1}},
                              QJsonObject{{QStringLiteral("text"), QStringLiteral("b")}}};
    const CartUpdateResponse reply(QJsonObject{{QStringLiteral("messages"), messages}});
    QCOMPARE(reply.messages(), (QStringList{QStringLiteral("a"), QString(), QStringLiteral("b")}));
}

QTEST_GUILESS_MAIN(TestCartUpdateResponse)
#include "tst_cartupdateresponse.moc"
