#include "cartaccessorrows.h"

#include "responses/cartcreateresponse.h"

#include <QJsonArray>
#include <QTest>

using tessaro::CartCreateResponse;
using Rows = CartAccessorRows<CartCreateResponse>;

class TestCartCreateResponse : public QObject
{
    Q_OBJECT

private slots:
    void accessors_data();
    void accessors() { Rows::check(); }
    void invoiceIdWithoutSlashes();
    void keepsTheBaseReply();
};

void TestCartCreateResponse::accessors_data()
{
    Rows::addColumns();
    Rows::add("uuid", &CartCreateResponse::uuid,
              QStringLiteral("uuid"), QStringLiteral("c-1"), QStringLiteral("c-1"), 17, QString());
    Rows::add("lTaNmbr", &CartCreateResponse::lTaNmbr,
              QStringLiteral("lTaNmbr"), 4711, QStringLiteral("4711"), QStringLiteral("4711"), QStringLiteral("0"));
    Rows::add("invoiceID", &CartCreateResponse::invoiceID,
              QStringLiteral("invoiceID"), QStringLiteral("1/2/3"), QStringLiteral("1/2/3"), QJsonArray{1}, QString());
    Rows::add("invoiceIDModified", &CartCreateResponse::invoiceIDModified,
              QStringLiteral("invoiceID"), QStringLiteral("1/2/3"), QStringLiteral("123"), true, QString());
}

void TestCartCreateResponse::invoiceIdWithoutSlashes()
{
    const CartCreateResponse reply(QJsonObject{{QStringLiteral("invoiceID"), QStringLiteral("12/34/5")}});
    QCOMPARE(reply.invoiceIDModified(), QStringLiteral("12345"));
    QCOMPARE(reply.invoiceID(), QStringLiteral("12/34/5"));
}

void TestCartCreateResponse::keepsTheBaseReply()
{
    const tessaro::Response base(QJsonObject{{QStringLiteral("uuid"), QStringLiteral("c-9")}});
    const CartCreateResponse reply(base);
    QCOMPARE(reply.uuid(), QStringLiteral("c-9"));
    QVERIFY(reply == base);
    QCOMPARE(reply.status(), tessaro::Response::Success);
}

QTEST_GUILESS_MAIN(TestCartCreateResponse)
#include "tst_cartcreateresponse.moc"
