#include "actionlog.h"
#include "actionplayer.h"
#include "cashierscript.h"
#include "scenarioparser.h"
#include "till.h"
#include "tillactions.h"
#include "tilldatafolder.h"

#include <basicexception.h>
#include <basicplugin.h>
#include <support/scriptedhttpserver.h>

#include <QTemporaryDir>
#include <QTest>

#include <stdexcept>

using namespace till;

/// One action played on a till with the stand-in plug-in: which host action
/// each scenario action becomes, and what the host does when one goes wrong.
class TestActionPlayer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void playsEachActionAsItsHostAction_data();
    void playsEachActionAsItsHostAction();
    void catchesWhatReachesTheHost_data();
    void catchesWhatReachesTheHost();
    void failedRestartIsTheRecordsFailure();
    void closeOfATillStoppedAfterClosingClosesNothing();

private:
    /// Parses a scenario whose actions are the usual start (an open return
    /// with one position) followed by \a action.
    bool load(const QByteArray &action);
    /// Plays the loaded scenario's actions up to \a last, the last one's outcome.
    ActionPlayer::Played playUpTo(int last, bool resuming = false);
    /// The open document's id, its cards and how often the plug-in started since \a starts.
    QString tillState(int starts) const;
    int starts() const;

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<ScriptedHttpServer> m_server;
    Scenario m_scenario;
    std::unique_ptr<CashierScript> m_script;
    std::unique_ptr<ActionLog> m_log;
    std::unique_ptr<Till> m_till;
    std::unique_ptr<TillActions> m_actions;
    std::unique_ptr<ActionPlayer> m_player;
};

namespace {

constexpr int run = 42;

/// "r" is a return the plug-in asks nothing for; "s" a return by sale.
const QByteArray scenarioStart = R"({
    "name": "One action",
    "till": {"backReasons": [{"code": 1, "name": "Брак"}]},
    "documents": {
        "r": {"type": "return", "card": "2770001", "properties": {"invoiceInfo": {"cashCode": "12"}}},
        "q": {"type": "return", "properties": {"invoiceInfo": {"cashCode": "13"}}},
        "s": {"type": "returnBySale", "saleIdentifier": "000701022024000012000345"}
    },
    "answers": [{"choice": "Брак"}],
    "actions": [
        {"type": "bind", "document": "r"},
        {"type": "add", "position": {"code": "100"}, "quantity": 1, "price": 5},
)";

/// Every action the host runs, whether the plug-in hooks it or not.
const QList<control::EActionType> hostActionTypes{
    control::AddPayment, control::SelectBackReason, control::BackBySale, control::ExitToMenu,
    control::InputPrice, control::InputQuantity, control::StornoAll, control::Input,
    control::AddCoupon, control::AddPosition, control::AttemptToDocumentClose, control::AttemptToBackBySale};

QList<int> stepTypes(const ActionRecord &record)
{
    QList<int> types;
    for (const HookStep &step : record.steps) {
        if (types.isEmpty() || types.last() != step.actionType)
            types << step.actionType;
    }
    return types;
}

} // namespace

void TestActionPlayer::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
    m_server->setDefaultAnswer(ScriptedHttpServer::Answer::json(200, R"({"status": "ok"})"));
    QString error;
    QVERIFY(TillDataFolder(m_dir->path()).create(m_server->url(QStringLiteral("/api")).toString(), QString(), &error));
}

void TestActionPlayer::cleanup()
{
    m_player.reset();
    m_actions.reset();
    m_till.reset();
    m_log.reset();
    m_script.reset();
    m_server.reset();
    m_dir.reset();
}

bool TestActionPlayer::load(const QByteArray &action)
{
    ScenarioParser parser;
    const std::optional<Scenario> scenario = parser.parse(scenarioStart + action + "]}");
    if (!scenario) {
        qWarning("%s", qPrintable(parser.error().toString()));
        return false;
    }
    m_scenario = *scenario;
    m_script = std::make_unique<CashierScript>(m_scenario.answers);
    m_log = std::make_unique<ActionLog>();
    m_till = std::make_unique<Till>(TillDataFolder(m_dir->path()), m_script.get(), m_log.get());
    m_actions = std::make_unique<TillActions>(m_till.get(), m_log.get());
    m_player = std::make_unique<ActionPlayer>(m_scenario, run, m_till.get(), m_actions.get(), m_log.get());
    QString error;
    if (!m_till->start(QStringLiteral(TILL_FAKE_PLUGIN_DIR), m_scenario.till, &error)) {
        qWarning("%s", qPrintable(error));
        return false;
    }
    // A trigger on each action shows in the record every action the pipeline ran.
    for (const control::EActionType type : hostActionTypes) {
        m_till->plugin().plugin()->addTrigger(ActionTrigger(EContext::Any, type, ActionTrigger::Before,
                                                            [](const control::Action &) { return EContext::Continue; },
                                                            ActionTrigger::Result(0), ActionTrigger::Low));
    }
    return true;
}

ActionPlayer::Played TestActionPlayer::playUpTo(int last, bool resuming)
{
    ActionPlayer::Played played;
    for (int i = 0; i <= last; ++i)
        played = m_player->play(m_scenario.actions.at(i), i, resuming && i == last);
    return played;
}

int TestActionPlayer::starts() const
{
    const auto document = m_till->currentDocument();
    return document ? document->getPluginData(m_till->cardType(), QStringLiteral("initCount")).toInt() : 0;
}

QString TestActionPlayer::tillState(int starts) const
{
    const auto document = m_till->currentDocument();
    if (!document)
        return QStringLiteral("none");
    return QStringLiteral("%1 cards:%2 restarts:%3").arg(document->getId()).arg(document->getCardRecords().size()).arg(this->starts() - starts);
}

void TestActionPlayer::playsEachActionAsItsHostAction_data()
{
    QTest::addColumn<QByteArray>("action");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QList<int>>("hostActions");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("state");

    const QString open = QStringLiteral("run0042-r cards:1 restarts:0");
    QTest::newRow("bind") << QByteArray(R"({"type": "bind", "document": "q"})") << QStringLiteral("open q") << QList<int>{} << -1
                          << QStringLiteral("run0042-q cards:0 restarts:0");
    QTest::newRow("backBySale") << QByteArray(R"({"type": "backBySale", "document": "s"})") << QStringLiteral("return by sale s")
                                << QList<int>{control::AttemptToBackBySale, control::BackBySale} << 2 << QStringLiteral("run0042-s cards:0 restarts:0");
    QTest::newRow("input") << QByteArray(R"({"type": "input"})") << QStringLiteral("input") << QList<int>{control::Input} << 2 << open;
    QTest::newRow("card") << QByteArray(R"({"type": "card", "number": "2770002"})") << QStringLiteral("card 2770002") << QList<int>{} << -1
                          << QStringLiteral("run0042-r cards:2 restarts:0");
    QTest::newRow("coupon") << QByteArray(R"({"type": "coupon", "number": "C1"})") << QStringLiteral("coupon C1") << QList<int>{control::AddCoupon}
                            << 2 << open;
    QTest::newRow("add") << QByteArray(R"({"type": "add", "position": {"code": "200"}, "quantity": 2, "price": 3})")
                         << QStringLiteral("add 200 ×2 at 3") << QList<int>{control::AddPosition} << 2 << open;
    QTest::newRow("reason for a position") << QByteArray(R"({"type": "reason", "target": "position", "position": 1})")
                                           << QStringLiteral("reason for position 1") << QList<int>{control::SelectBackReason} << 2 << open;
    QTest::newRow("reason for the document") << QByteArray(R"({"type": "reason", "target": "document"})")
                                             << QStringLiteral("reason for the document") << QList<int>{control::SelectBackReason} << 0 << open;
    QTest::newRow("pay") << QByteArray(R"({"type": "pay", "code": 1, "amount": 5})") << QStringLiteral("pay 5 in currency 1")
                         << QList<int>{control::AddPayment} << 2 << open;
    QTest::newRow("stornoAll") << QByteArray(R"({"type": "stornoAll"})") << QStringLiteral("cancel every position")
                               << QList<int>{control::StornoAll, control::ExitToMenu} << 2 << open;
    QTest::newRow("close") << QByteArray(R"({"type": "close"})") << QStringLiteral("close the document")
                           << QList<int>{control::AttemptToDocumentClose} << 2 << QStringLiteral("none");
    QTest::newRow("close, the host refusing") << QByteArray(R"({"type": "close", "hostRefuses": true})")
                                              << QStringLiteral("close the document (the printer fails)")
                                              << QList<int>{control::AttemptToDocumentClose} << 0 << open;
    QTest::newRow("restart") << QByteArray(R"({"type": "restart", "note": "power cut"})") << QStringLiteral("power cut (restart the till)")
                             << QList<int>{} << -1 << QStringLiteral("run0042-r cards:1 restarts:1");
}

void TestActionPlayer::playsEachActionAsItsHostAction()
{
    QFETCH(QByteArray, action);
    QFETCH(QString, title);
    QFETCH(QList<int>, hostActions);
    QFETCH(int, result);
    QFETCH(QString, state);

    QVERIFY(load(action));
    playUpTo(1);
    const int before = starts();
    const ActionPlayer::Played played = m_player->play(m_scenario.actions.at(2), 2);
    QCOMPARE(played.record.index, 2);
    QCOMPARE(played.record.type, ScenarioAction::typeName(m_scenario.actions.last().type));
    QCOMPARE(played.record.title, title);
    QCOMPARE(stepTypes(played.record), hostActions);
    QCOMPARE(played.record.result.value_or(-1), result);
    QVERIFY2(played.exception.isEmpty(), qPrintable(played.exception));
    QVERIFY(played.restarted);
    QCOMPARE(tillState(before), state);
}

void TestActionPlayer::catchesWhatReachesTheHost_data()
{
    QTest::addColumn<bool>("hostException");
    QTest::addColumn<QString>("exception");

    QTest::newRow("the host's exception") << true << QStringLiteral("an exception reached the host: Нет связи");
    QTest::newRow("a standard exception") << false << QStringLiteral("an exception reached the host: out of range");
}

void TestActionPlayer::catchesWhatReachesTheHost()
{
    QFETCH(bool, hostException);
    QFETCH(QString, exception);

    QVERIFY(load(R"({"type": "restart"})"));
    m_player->setRestart([hostException](QString *) -> bool {
        if (hostException)
            throw BasicException(tr::Tr(QStringLiteral("tessaroConnection"), QStringLiteral("Нет связи")));
        throw std::out_of_range("out of range");
    });
    const ActionPlayer::Played played = playUpTo(2);
    QCOMPARE(played.exception, exception);
    QCOMPARE(played.record.failures, QStringList{exception});
    // The log is ready for the next action.
    const ActionPlayer::Played next = m_player->play(m_scenario.actions.at(1), 3);
    QCOMPARE(next.record.index, 3);
    QCOMPARE(next.record.result, std::optional<int>(2));
    QVERIFY(next.record.failures.isEmpty());
}

void TestActionPlayer::failedRestartIsTheRecordsFailure()
{
    QVERIFY(load(R"({"type": "restart"})"));
    m_player->setRestart([](QString *error) {
        *error = QStringLiteral("the plug-in is gone");
        return false;
    });
    const ActionPlayer::Played played = playUpTo(2);
    QVERIFY(!played.restarted);
    QCOMPARE(played.restartError, QStringLiteral("the plug-in is gone"));
    QCOMPARE(played.record.failures, QStringList{QStringLiteral("the plug-in is gone")});
    QVERIFY(played.exception.isEmpty());
}

void TestActionPlayer::closeOfATillStoppedAfterClosingClosesNothing()
{
    QVERIFY(load(R"({"type": "close"})"));
    QCOMPARE(playUpTo(2).record.result, std::optional<int>(2));
    QCOMPARE(m_server->requests().size(), 1);
    const ActionPlayer::Played again = m_player->play(m_scenario.actions.at(2), 2, true);
    QCOMPARE(again.record.result, std::optional<int>(2));
    QCOMPARE(again.record.notes, QStringList{QStringLiteral("the document was closed before the till stopped")});
    QVERIFY(again.record.steps.isEmpty());
    QVERIFY(again.document);
    QCOMPARE(again.document->getId(), QStringLiteral("run0042-r"));
    QCOMPARE(m_server->requests().size(), 1);
}

QTEST_GUILESS_MAIN(TestActionPlayer)
#include "tst_actionplayer.moc"
