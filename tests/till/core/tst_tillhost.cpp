#include "actionlog.h"
#include "cashierscript.h"
#include "pluginhost.h"
#include "scenarioparser.h"
#include "till.h"
#include "tillactions.h"
#include "tilldatafolder.h"

#include <backdocument.h>
#include <basicloyaltysystem.h>
#include <basicplugin.h>
#include <contextmanager.h>
#include <documentsdao.h>
#include <singleton.h>
#include <support/scriptedhttpserver.h>

#include <QTemporaryDir>
#include <QTest>

using namespace till;

/// The till as a host of a plug-in, with a stand-in plug-in built for these tests.
class TestTillHost : public QObject
{
    Q_OBJECT

private slots:
    void loadsThePluginThroughItsInterfaces();
    void namesAMissingPlugin();
    void bindingShowsThePluginsForm();
    void beforeHookStopsTheAction();
    void hookRunsTheHostsQuantityInput();
    void handlerTakesOverItsAction();
    void queuedActionRunsAfterTheAction();
    void refusedPaymentAddsNothing();
    void closeSendsThroughTheRecordingClient();
    void restartReadsDocumentsBackAndStartsThePluginAgain();
    void strictHostSavesOnlyItsOwnChanges_data();
    void strictHostSavesOnlyItsOwnChanges();

private:
    static QList<CashierAnswer> answers(const QByteArray &json);
};

namespace {

/// A till in a temporary folder with the test plug-in, its dialogs answered from a script.
struct TestTill
{
    explicit TestTill(const QList<CashierAnswer> &answers = {}, const QString &serviceUrl = QStringLiteral("http://127.0.0.1:9"))
        : folder(dir.path())
        , script(answers)
        , till(folder, &script, &log)
        , actions(&till, &log)
    {
        QString error;
        folder.create(serviceUrl, QString(), &error);
        started = till.start(QStringLiteral(TILL_FAKE_PLUGIN_DIR), TillSettings(), &error);
        if (!started)
            qWarning("%s", qPrintable(error));
        log.begin(0, QStringLiteral("test"), QString());
    }

    /// A new return document, open and bound to the plug-in.
    QSharedPointer<AbstractDocument> openReturn(bool withCard)
    {
        auto document = QSharedPointer<BackDocument>::create();
        document->setId(QStringLiteral("r%1").arg(++count));
        if (withCard)
            document->addCardRecord(QSharedPointer<DocumentCardRecord>::create(till.cardType(), QStringLiteral("2770001")));
        document->setDocumentProperty(QStringLiteral("invoiceInfo"), QVariantMap{{QStringLiteral("cashCode"), QStringLiteral("1")}});
        actions.open(document);
        return document;
    }

    QTemporaryDir dir;
    TillDataFolder folder;
    CashierScript script;
    ActionLog log;
    Till till;
    TillActions actions;
    bool started = false;
    int count = 0;
};

QStringList stepKinds(const ActionRecord &record)
{
    QStringList kinds;
    for (const HookStep &step : record.steps)
        kinds << QStringLiteral("%1 %2 → %3").arg(step.kind).arg(step.actionType).arg(step.result);
    return kinds;
}

} // namespace

QList<CashierAnswer> TestTillHost::answers(const QByteArray &json)
{
    ScenarioParser parser;
    const auto scenario = parser.parse(R"({"name": "n", "actions": [{"type": "input"}], "answers": )" + json + "}");
    return scenario ? scenario->answers : QList<CashierAnswer>();
}

void TestTillHost::loadsThePluginThroughItsInterfaces()
{
    PluginHost host;
    QString error;
    QVERIFY2(host.load(QStringLiteral(TILL_FAKE_PLUGIN_DIR), &error), qPrintable(error));
    QVERIFY(host.fileName().endsWith(QStringLiteral("/libtessaroback.so")));
    QCOMPARE(host.metaData().value(QStringLiteral("IID")).toString(), QStringLiteral("TessaroBack"));
    QVERIFY(host.plugin());
    QVERIFY(host.loyaltySystem());
    QCOMPARE(host.loyaltySystem()->getSystemType(), 27);
    // The plug-in object is the library's one: a second loader reaches the same.
    PluginHost again;
    QVERIFY(again.load(QStringLiteral(TILL_FAKE_PLUGIN_DIR), &error));
    QCOMPARE(again.object(), host.object());
}

void TestTillHost::namesAMissingPlugin()
{
    QTemporaryDir dir;
    PluginHost host;
    QString error;
    QVERIFY(!host.load(dir.path(), &error));
    QCOMPARE(error, QStringLiteral("no plug-in libtessaroback.so in %1").arg(dir.path()));
}

void TestTillHost::bindingShowsThePluginsForm()
{
    TestTill test(answers(R"([{"form": {"cashCode": "12", "invoiceDate": "01.02.2024"}}])"));
    QVERIFY(test.started);
    auto document = QSharedPointer<BackDocument>::create();
    document->setId(QStringLiteral("r1"));
    test.actions.open(document);
    const ActionRecord record = test.log.finish();
    QCOMPARE(record.dialogs.size(), 1);
    QCOMPARE(record.dialogs.first().kind, QStringLiteral("form"));
    QCOMPARE(record.dialogs.first().id, QStringLiteral("fakeInvoice"));
    QCOMPARE(record.dialogs.first().items, (QStringList{QStringLiteral("cashCode"), QStringLiteral("invoiceDate")}));
    // The date went back to the plug-in as a date.
    QCOMPARE(document->getDocumentProperty(QStringLiteral("invoiceInfo")).toMap(),
             (QVariantMap{{QStringLiteral("cashCode"), QStringLiteral("12")}, {QStringLiteral("invoiceDate"), QStringLiteral("2024-02-01")}}));
    QCOMPARE(test.till.currentDocument(), document);
    QVERIFY(Singleton<ContextManager>::instance()->isCurrentContext(EContext::Document));
}

void TestTillHost::beforeHookStopsTheAction()
{
    TestTill test;
    const auto document = test.openReturn(false);
    PositionSpec position;
    position.code = QStringLiteral("100");
    QCOMPARE(test.actions.add(position, 1.0, 5.0), 0);
    const ActionRecord record = test.log.finish();
    QCOMPARE(stepKinds(record), QStringList{QStringLiteral("before 201 → 0")});
    QCOMPARE(record.dialogs.first().id, QStringLiteral("fakeNoCard"));
    QCOMPARE(record.dialogs.first().kind, QStringLiteral("error"));
    QVERIFY(document->getGoodsItems().isEmpty());
}

void TestTillHost::hookRunsTheHostsQuantityInput()
{
    TestTill test(answers(R"([{"quantity": 3}])"));
    const auto document = test.openReturn(true);
    PositionSpec position;
    position.code = QStringLiteral("100");
    position.price = 4;
    QCOMPARE(test.actions.add(position, std::nullopt, std::nullopt), 2);
    const ActionRecord record = test.log.finish();
    QCOMPARE(stepKinds(record), (QStringList{QStringLiteral("host 101 → 2"), QStringLiteral("before 201 → 2"), QStringLiteral("host 201 → 2")}));
    QCOMPARE(record.dialogs.first().kind, QStringLiteral("quantity"));
    QCOMPARE(document->getGoodsItems().size(), 1);
    QCOMPARE(document->getGoodsItems().first()->getQuantity(), 3.0);
    QCOMPARE(document->getGoodsItems().first()->getSumb(), 12.0);
    QCOMPARE(document->getGoodsItems().first()->getPosnum(), 1);
}

void TestTillHost::handlerTakesOverItsAction()
{
    TestTill test(answers(R"([{"choice": "Покупатель передумал"}])"));
    const auto document = test.openReturn(true);
    PositionSpec position;
    position.code = QStringLiteral("100");
    test.actions.add(position, 1.0, 5.0);
    test.log.finish();
    test.log.begin(1, QStringLiteral("reason"), QString());
    QCOMPARE(test.actions.reason(false, 1), 2);
    const ActionRecord record = test.log.finish();
    QCOMPARE(stepKinds(record), QStringList{QStringLiteral("handler 7 → 2")});
    QCOMPARE(record.dialogs.first().answer.toInt(), 2);
    QCOMPARE(document->getGoodsItems().first()->getAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason")).toInt(), 3);
}

void TestTillHost::queuedActionRunsAfterTheAction()
{
    TestTill test;
    const auto document = test.openReturn(true);
    QCOMPARE(test.actions.stornoAll(), 2);
    QCOMPARE(stepKinds(test.log.finish()), (QStringList{QStringLiteral("host 131 → 2"), QStringLiteral("after 131 → 2"), QStringLiteral("host 58 → 2")}));
    QVERIFY(Singleton<ContextManager>::instance()->isCurrentContext(EContext::Menu));
    // Leaving to the menu does not close the document.
    QCOMPARE(test.till.currentDocument(), document);
}

void TestTillHost::refusedPaymentAddsNothing()
{
    TestTill test;
    const auto document = test.openReturn(true);
    PaymentSpec card;
    card.code = 2;
    card.amount = 10;
    QCOMPARE(test.actions.pay(card), 2);
    PaymentSpec certificate = card;
    certificate.code = 3;
    QCOMPARE(test.actions.pay(certificate), 0);
    QCOMPARE(test.log.finish().dialogs.first().id, QStringLiteral("fakeConflictPayment"));
    QCOMPARE(document->getMoneyItems().size(), 1);
    QCOMPARE(document->getMoneyItems().first()->getValName(), QStringLiteral("Банковская карта"));
}

void TestTillHost::closeSendsThroughTheRecordingClient()
{
    ScriptedHttpServer server;
    QVERIFY(server.start());
    server.enqueue(ScriptedHttpServer::Answer::json(200, R"({"key4": "12/34/56"})"));
    TestTill test({}, server.url(QStringLiteral("/api")).toString());
    const auto document = test.openReturn(true);
    PaymentSpec cash;
    cash.code = 1;
    cash.amount = 10;
    test.actions.pay(cash);
    test.log.finish();
    test.log.begin(1, QStringLiteral("close"), QString());
    QCOMPARE(test.actions.close(), 2);
    const ActionRecord record = test.log.finish();
    QCOMPARE(record.requests.size(), 1);
    QCOMPARE(record.requests.first().method, QStringLiteral("POST"));
    QCOMPARE(record.requests.first().path, QStringLiteral("/api/advicenote"));
    QCOMPARE(record.requests.first().httpCode, 200);
    QCOMPARE(record.requests.first().requestBody[QStringLiteral("document")].toString(), document->getId());
    QCOMPARE(record.requests.first().responseBody[QStringLiteral("key4")].toString(), QStringLiteral("12/34/56"));
    QCOMPARE(server.requests().first().path, QStringLiteral("/api/advicenote"));
    QVERIFY(document->isClosed());
    QVERIFY(!test.till.currentDocument());
    QCOMPARE(test.till.state().currentDocument(), QString());
    QCOMPARE(Singleton<DocumentsDao>::instance()->getPaymentTotal(1, 1).toDouble(), 10.0);
}

void TestTillHost::restartReadsDocumentsBackAndStartsThePluginAgain()
{
    TestTill test;
    const auto document = test.openReturn(true);
    const int initCount = document->getPluginData(27, QStringLiteral("initCount")).toInt();
    const int triggers = int(test.till.plugin().plugin()->triggers().size());
    QString error;
    QVERIFY2(test.till.restart(&error), qPrintable(error));
    const auto reopened = test.till.currentDocument();
    QVERIFY(reopened);
    QVERIFY(reopened != document);
    QCOMPARE(reopened->getId(), document->getId());
    QCOMPARE(reopened->getPluginData(27, QStringLiteral("initCount")).toInt(), initCount + 1);
    QVERIFY(reopened->getPluginData(27, QStringLiteral("restoreCount")).toInt() > 0);
    QCOMPARE(reopened->getCardRecords().size(), 1);
    // init registered its hooks once more, after the host dropped the old ones.
    QCOMPARE(int(test.till.plugin().plugin()->triggers().size()), triggers);
}

void TestTillHost::strictHostSavesOnlyItsOwnChanges_data()
{
    QTest::addColumn<bool>("strict");
    QTest::addColumn<bool>("reasonKept");
    QTest::newRow("saves after every action") << false << true;
    QTest::newRow("strict") << true << false;
}

void TestTillHost::strictHostSavesOnlyItsOwnChanges()
{
    QFETCH(bool, strict);
    QFETCH(bool, reasonKept);
    TestTill test(answers(R"([{"choice": "Покупатель передумал"}])"));
    test.till.setStrictHost(strict);
    test.openReturn(true);
    PositionSpec position;
    position.code = QStringLiteral("100");
    test.actions.add(position, 1.0, 5.0);
    // The plug-in's handler sets the reason on the position and saves nothing.
    QCOMPARE(test.actions.reason(false, 1), 2);
    QString error;
    QVERIFY2(test.till.restart(&error), qPrintable(error));
    const auto reopened = test.till.currentDocument();
    QVERIFY(reopened);
    // The position the host added itself is on disk either way.
    QCOMPARE(reopened->getGoodsItems().size(), 1);
    QCOMPARE(reopened->getGoodsItems().first()->getAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason")).isValid(),
             reasonKept);
}

QTEST_GUILESS_MAIN(TestTillHost)
#include "tst_tillhost.moc"
