#include "cartaccessorrows.h"

#include "responses/addcustomerresponse.h"

#include <QJsonArray>
#include <QTest>

using tessaro::AddCustomerResponse;
using Rows = CartAccessorRows<AddCustomerResponse>;

class TestCartAddCustomerResponse : public QObject
{
    Q_OBJECT

private slots:
    void textAccessors_data();
    void textAccessors() { Rows::check(); }
    void numberAccessors_data();
    void numberAccessors() { Rows::check(); }
    void flagsAndRawValues_data();
    void flagsAndRawValues() { Rows::check(); }
    void creditIsAllowedUnlessRefused();
    void blockingCodeTellsMissingFromZero();
    void blockingReasonIsCutToFiftyCharacters();
    void customerNotFoundIsReported();
};

void TestCartAddCustomerResponse::textAccessors_data()
{
    Rows::addColumns();
    const QString value = QStringLiteral("Иван");
    const QJsonValue mistyped = 42;
    const struct
    {
        const char *name;
        QString (AddCustomerResponse::*accessor)() const;
        const char *key;
    } accessors[] = {
        {"firstName", &AddCustomerResponse::firstName, "firstName"},
        {"lastName", &AddCustomerResponse::lastName, "lastName"},
        {"email", &AddCustomerResponse::email, "email"},
        {"mobilePhone", &AddCustomerResponse::mobilePhone, "mobilePhone"},
        {"customerName", &AddCustomerResponse::customerName, "custName"},
        {"inn", &AddCustomerResponse::inn, "inn"},
        {"customerAddress", &AddCustomerResponse::customerAddress, "customerAddress"},
        {"blockingReason", &AddCustomerResponse::blockingReason, "blockingReason"},
        {"cardNumber", &AddCustomerResponse::cardNumber, "cardNo"},
        {"branch", &AddCustomerResponse::branch, "branchDescription"},
    };
    for (const auto &row : accessors)
        Rows::add(row.name, row.accessor, QLatin1String(row.key), value, value, mistyped, QString());
}

void TestCartAddCustomerResponse::numberAccessors_data()
{
    Rows::addColumns();
    const QJsonValue mistyped = QStringLiteral("12");
    Rows::add("clientNumber", &AddCustomerResponse::clientNumber, QStringLiteral("custNo"), 1234, QStringLiteral("1234"), mistyped,
              QStringLiteral("0"));
    Rows::add("storeNumber", &AddCustomerResponse::storeNumber, QStringLiteral("storeNo"), 7, QStringLiteral("7"), mistyped,
              QStringLiteral("0"));
    Rows::add("customerSegment", &AddCustomerResponse::customerSegment, QStringLiteral("customerSegment"), 3, 3, mistyped, 0);
    Rows::add("cardHolderNumber", &AddCustomerResponse::cardHolderNumber, QStringLiteral("cardholderNo"), 2, 2, mistyped, 0);
    Rows::add("allowSale", &AddCustomerResponse::allowSale, QStringLiteral("allowSale"), 1, 1, mistyped, 0);
    // A fraction is not an integer either.
    Rows::addRow("allowSale", "fraction", &AddCustomerResponse::allowSale, QJsonObject{{QStringLiteral("allowSale"), 1.5}}, 0);
}

void TestCartAddCustomerResponse::flagsAndRawValues_data()
{
    Rows::addColumns();
    const QString credit = QStringLiteral("creditPaymentAllowed");
    Rows::addRow("creditPaymentAllowed", "true", &AddCustomerResponse::creditPaymentAllowed, QJsonObject{{credit, true}}, true);
    Rows::addRow("creditPaymentAllowed", "missing", &AddCustomerResponse::creditPaymentAllowed, QJsonObject{{QStringLiteral("x"), 1}}, true);
    Rows::addRow("creditPaymentAllowed", "mistyped", &AddCustomerResponse::creditPaymentAllowed, QJsonObject{{credit, 1}}, false);

    const QString blocking = QStringLiteral("blockingCode");
    Rows::addRow("blockingCode", "present", &AddCustomerResponse::blockingCode, QJsonObject{{blocking, 5}}, QStringLiteral("5"));
    Rows::addRow("blockingCode", "missing", &AddCustomerResponse::blockingCode, QJsonObject{{QStringLiteral("x"), 1}}, QString());
    Rows::addRow("blockingCode", "mistyped", &AddCustomerResponse::blockingCode, QJsonObject{{blocking, QStringLiteral("5")}},
                 QStringLiteral("0"));

    const QString edo = QStringLiteral("edo");
    Rows::addRow("edo", "object", &AddCustomerResponse::edo, QJsonObject{{edo, QJsonObject{{QStringLiteral("id"), 1}}}},
                 QVariantMap{{QStringLiteral("id"), 1}});
    Rows::addRow("edo", "text", &AddCustomerResponse::edo, QJsonObject{{edo, QStringLiteral("yes")}}, QStringLiteral("yes"));
    Rows::addRow("edo", "missing", &AddCustomerResponse::edo, QJsonObject{{QStringLiteral("x"), 1}}, QVariant());
}

void TestCartAddCustomerResponse::creditIsAllowedUnlessRefused()
{
    QVERIFY(AddCustomerResponse(QJsonObject{{QStringLiteral("custNo"), 1}}).creditPaymentAllowed());
    QVERIFY(!AddCustomerResponse(QJsonObject{{QStringLiteral("creditPaymentAllowed"), false}}).creditPaymentAllowed());
}

void TestCartAddCustomerResponse::blockingCodeTellsMissingFromZero()
{
    const QString missing = AddCustomerResponse(QJsonObject{{QStringLiteral("custNo"), 1}}).blockingCode();
    QVERIFY(missing.isEmpty());
    QCOMPARE(AddCustomerResponse(QJsonObject{{QStringLiteral("blockingCode"), 0}}).blockingCode(), QStringLiteral("0"));
}

void TestCartAddCustomerResponse::blockingReasonIsCutToFiftyCharacters()
{
    const QString reason = QString(30, QLatin1Char('a')) + QString(50, QChar(0x0436));
    const AddCustomerResponse reply(QJsonObject{{QStringLiteral("blockingReason"), reason}});
    QCOMPARE(reason.size(), 80);
    QCOMPARE(reply.blockingReason(), reason.left(50));
    QCOMPARE(reply.blockingReason().size(), 50);
}

void TestCartAddCustomerResponse::customerNotFoundIsReported()
{
    const AddCustomerResponse reply(QJsonObject{{QStringLiteral("message"), QStringLiteral("Customer wasn't found in CustomerAPI")}});
    QCOMPARE(reply.status(), tessaro::Response::CustomerNotFound);
    QCOMPARE(reply.errorMessage().id(), QStringLiteral("tessaroClientNotFoundError"));
}

QTEST_GUILESS_MAIN(TestCartAddCustomerResponse)
#include "tst_cartaddcustomerresponse.moc"
