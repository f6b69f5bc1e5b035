// Refusing payments in currencies that must not be mixed in one document.

#include "plugintesthost.h"
#include "testableplugin.h"

#include <abstractdocument.h>
#include <edocumenttype.h>

#include <QTest>

namespace {

// A sale document already paid in the currencies \a paid, in that order.
QSharedPointer<AbstractDocument> paidDocument(PluginTestHost &host, const QList<int> &paid)
{
    const auto document = host.document(EDocumentType::Sale);
    for (int code : paid) {
        auto payment = QSharedPointer<MoneyItem>::create();
        payment->setValCode(code);
        document->addMoneyItem(payment);
    }
    return document;
}

control::Action paymentAction(const QString &valutCode)
{
    return control::Action(control::AddPayment, {{QStringLiteral("valutCode"), valutCode}});
}

} // namespace

class TestPaymentRestrictions : public QObject
{
    Q_OBJECT

private slots:
    void paymentInCurrency_data();
    void paymentInCurrency();
    void conflictWithSeveralPaymentsIsShownOnce();
    void emptyEntryOfThePaymentListIsSkipped();
};

void TestPaymentRestrictions::paymentInCurrency_data()
{
    QTest::addColumn<QString>("forbidden");
    QTest::addColumn<QList<int>>("paid");
    QTest::addColumn<QString>("valutCode");
    QTest::addColumn<bool>("allowed");
    QTest::newRow("no list allows every payment") << QString() << QList<int>{1} << "2" << true;
    QTest::newRow("forbidden pair") << "1=2" << QList<int>{1} << "2" << false;
    QTest::newRow("same currency again") << "1=2" << QList<int>{1} << "1" << true;
    QTest::newRow("pair read the other way") << "1=2" << QList<int>{2} << "1" << false;
    QTest::newRow("later payment conflicts") << "1=2" << QList<int>{3, 1} << "2" << false;
    QTest::newRow("unrelated currency") << "1=2" << QList<int>{1} << "3" << true;
    QTest::newRow("no payments yet") << "1=2" << QList<int>() << "2" << true;
    QTest::newRow("text code counts as 0, 0 forbidden") << "0=3" << QList<int>{3} << "cash" << false;
    QTest::newRow("text code counts as 0, 0 free") << "1=2" << QList<int>{1} << "cash" << true;
    QTest::newRow("code beyond 32 bits counts as 0") << "0=3" << QList<int>{3} << "4294967298" << false;
}

void TestPaymentRestrictions::paymentInCurrency()
{
    QFETCH(QString, forbidden);
    QFETCH(QList<int>, paid);
    QFETCH(QString, valutCode);
    QFETCH(bool, allowed);
    PluginTestHost host(forbidden.isEmpty() ? QString() : QStringLiteral("[Tessaro.ForbiddenMixedValuts]\n%1\n").arg(forbidden));
    TestablePlugin plugin;
    plugin.init();
    plugin.setDocument(paidDocument(host, paid));

    const EContext::Result result = plugin.checkPaymentRestrictions(paymentAction(valutCode));
    QCOMPARE(result, allowed ? EContext::Continue : EContext::Stop);
    const auto shown = host.dialog()->messages();
    if (allowed) {
        QVERIFY(shown.isEmpty());
        return;
    }
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown.first().message, tr::Tr(QStringLiteral("tessaroConflictPayment"), QStringLiteral("В документе есть несовместимые оплаты")));
    QCOMPARE(shown.first().kind, 1);
    QCOMPARE(shown.first().timeout, 0);
}

void TestPaymentRestrictions::conflictWithSeveralPaymentsIsShownOnce()
{
    PluginTestHost host(QStringLiteral("[Tessaro.ForbiddenMixedValuts]\n1=2,3\n"));
    TestablePlugin plugin;
    plugin.init();
    plugin.setDocument(paidDocument(host, {2, 3, 2}));
    QCOMPARE(plugin.checkPaymentRestrictions(paymentAction(QStringLiteral("1"))), EContext::Stop);
    QCOMPARE(host.dialog()->messages().size(), 1);
}

void TestPaymentRestrictions::emptyEntryOfThePaymentListIsSkipped()
{
    PluginTestHost host(QStringLiteral("[Tessaro.ForbiddenMixedValuts]\n1=2\n"));
    TestablePlugin plugin;
    plugin.init();
    const auto document = paidDocument(host, {});
    document->addMoneyItem(QSharedPointer<MoneyItem>());
    document->addMoneyItem(paidDocument(host, {2})->getMoneyItems().first());
    plugin.setDocument(document);
    QCOMPARE(plugin.checkPaymentRestrictions(paymentAction(QStringLiteral("3"))), EContext::Continue);
    QCOMPARE(plugin.checkPaymentRestrictions(paymentAction(QStringLiteral("1"))), EContext::Stop);
}

QTEST_GUILESS_MAIN(TestPaymentRestrictions)
#include "tst_paymentrestrictions.moc"
