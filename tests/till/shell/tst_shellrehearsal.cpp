// The shell as a rehearsal bench: a bundled scenario's return typed by hand,
// with the position and payment fields a scenario gives, reaches the service
// as the same advice note.

#include "demorunner.h"
#include "emulatedtill.h"
#include "scenarioparser.h"
#include "scenariorunner.h"
#include "shellsession.h"

#include <QJsonDocument>
#include <QTest>
#include <QTextStream>

using namespace till;

class TestShellRehearsal : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void handTypedReturnSendsTheScenariosAdviceNote();
    void closeShowsTheReturnInvoiceNumber();
    void returnBySaleShowsItsResult();
    void helpSaysACardComesBeforeGoods();
    void badFieldIsNamed_data();
    void badFieldIsNamed();

private:
    /// Starts a new emulator with a new till.
    void startService();
    /// Types \a input into a shell on the service's till; returns what it printed.
    QString shell(const QByteArray &input);
    /// The body of the one advice note the emulator received.
    QJsonObject adviceNote() const;

    std::unique_ptr<EmulatedTill> m_service;
};

namespace {

/// Bundled scenario 01 at the terminal: the card, the invoice form, a position
/// whose quantity and price are asked, one typed with them, cash.
const QByteArray plainReturn = "new-return\n"
                               "12\n345\n7\n01.02.2024\n"
                               "card 2770000000013\n"
                               "input\n"
                               "add 100200 barcode=4600000000017 name=Футболка vat=1 rate=20 vatsum=50\n"
                               "1\n2\n150\n"
                               "add 100300 3 40 barcode=4600000000024 name=Шарф vat=1 rate=20 vatsum=20\n"
                               "3\n"
                               "pay 1 420\n"
                               "close\n"
                               "quit\n";

} // namespace

void TestShellRehearsal::init()
{
    startService();
}

void TestShellRehearsal::cleanup()
{
    m_service.reset();
}

void TestShellRehearsal::startService()
{
    m_service = std::make_unique<EmulatedTill>();
    QString error;
    QVERIFY2(m_service->start(&error), qPrintable(error));
}

QString TestShellRehearsal::shell(const QByteArray &input)
{
    QByteArray typed = input;
    QTextStream in(&typed, QIODevice::ReadOnly);
    QString printed;
    QTextStream out(&printed);
    ShellSession session(m_service->folder(), &in, &out);
    const ExitCode exitCode = session.run(QStringLiteral(TILL_PLUGIN_DIR));
    out.flush();
    return exitCode == ExitCode::Passed ? printed : QStringLiteral("exit code %1\n%2").arg(exitStatus(exitCode)).arg(printed);
}

QJsonObject TestShellRehearsal::adviceNote() const
{
    const auto notes = m_service->emulator().journal().entriesFor(QStringLiteral("/advicenote"));
    return notes.size() == 1 ? notes.first().exchange.jsonObject() : QJsonObject();
}

void TestShellRehearsal::handTypedReturnSendsTheScenariosAdviceNote()
{
    const QList<DemoRunner::Play> plays = DemoRunner::bundled();
    const auto play = std::find_if(plays.cbegin(), plays.cend(), [](const DemoRunner::Play &p) { return p.name == QLatin1String("01-plain-return"); });
    QVERIFY(play != plays.cend());
    ScenarioParser parser(play->name);
    const std::optional<Scenario> scenario = parser.parse(play->scenario);
    QVERIFY2(scenario, qPrintable(parser.error().toString()));
    ScenarioRunner runner(m_service->folder(), *scenario, play->scenario, play->name);
    ScenarioRunner::Options options;
    options.pluginFolder = QStringLiteral(TILL_PLUGIN_DIR);
    Report report;
    QString error;
    QVERIFY2(runner.run(options, &report, &error), qPrintable(error));
    QVERIFY2(report.passed(), qPrintable(report.allFailures().join(QLatin1Char('\n'))));
    const QJsonObject fromScenario = adviceNote();
    QVERIFY(!fromScenario.isEmpty());

    startService();
    const QString printed = shell(plainReturn);
    QCOMPARE(QString::fromUtf8(QJsonDocument(adviceNote()).toJson()), QString::fromUtf8(QJsonDocument(fromScenario).toJson()));
    QVERIFY2(printed.contains(QStringLiteral("close → 2")), qPrintable(printed));
}

void TestShellRehearsal::closeShowsTheReturnInvoiceNumber()
{
    const QString printed = shell(plainReturn);
    const auto notes = m_service->emulator().state().adviceNotes.notes();
    QCOMPARE(notes.size(), 1);
    const QString number = notes.first().key4;
    QVERIFY(!number.isEmpty());
    const QString plain = QString(number).remove(QLatin1Char('/'));
    QVERIFY2(printed.contains(QStringLiteral("  return invoice %1 (invoiceID %2)\n").arg(number, plain)), qPrintable(printed));
}

void TestShellRehearsal::returnBySaleShowsItsResult()
{
    // The plug-in asks for the common reason first; the return by sale goes on.
    const QString printed = shell("new-return-by-sale 000701022024000012000345\n1\nquit\n");
    QVERIFY2(printed.contains(QStringLiteral("new-return-by-sale 000701022024000012000345 → 2  (1 dialog(s))\n")), qPrintable(printed));
}

void TestShellRehearsal::helpSaysACardComesBeforeGoods()
{
    QVERIFY2(ShellSession::help().contains(QStringLiteral("plug-in takes goods only after a customer card")), qPrintable(ShellSession::help()));
}

void TestShellRehearsal::badFieldIsNamed_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("says");
    QTest::newRow("unknown position field") << QStringLiteral("add 100 colour=red")
                                            << QStringLiteral("add: unknown field colour (fields: barcode,");
    QTest::newRow("no equals sign") << QStringLiteral("add 100 2 5 barcode")
                                    << QStringLiteral("add: barcode is no field=value");
    QTest::newRow("number expected") << QStringLiteral("add 100 rate=twenty")
                                     << QStringLiteral("add: vatRate: expected a number, found a string");
    QTest::newRow("list of numbers expected") << QStringLiteral("add 100 vatCodes=1,x")
                                              << QStringLiteral("add: vatCodes[1]: expected a number, found a string");
    QTest::newRow("unknown payment field") << QStringLiteral("pay 1 10 colour=red")
                                           << QStringLiteral("pay: unknown field colour (fields: change,");
    QTest::newRow("payment detail of the wrong kind") << QStringLiteral("pay 1 10 valutType=cash")
                                                      << QStringLiteral("pay: valutType: expected a number, found \"cash\"");
}

void TestShellRehearsal::badFieldIsNamed()
{
    QFETCH(QString, command);
    QFETCH(QString, says);
    const QString printed = shell("new-return\n12\n345\n7\n01.02.2024\ncard 2770000000013\n" + command.toUtf8() + "\nshow\nquit\n");
    QVERIFY2(printed.contains(says), qPrintable(printed));
    // Nothing was added.
    QVERIFY2(!printed.contains(QStringLiteral("position 1:")) && !printed.contains(QStringLiteral("payments:")), qPrintable(printed));
}

QTEST_GUILESS_MAIN(TestShellRehearsal)
#include "tst_shellrehearsal.moc"
