#include "cashierscript.h"
#include "scenarioparser.h"

#include <QTest>

using namespace till;

class TestCashierScript : public QObject
{
    Q_OBJECT

private slots:
    void answersInOrder();
    void choosesByText();
    void wrongKindCancelsAndIsReported();
    void noAnswerLeftCancelsAndIsReported();
    void choiceOutOfRange();
    void formFieldsAreChecked_data();
    void formFieldsAreChecked();
    void resumesAtAPosition();

private:
    static QList<CashierAnswer> answers(const QByteArray &json);
    static FormRequest invoiceForm();
};

QList<CashierAnswer> TestCashierScript::answers(const QByteArray &json)
{
    ScenarioParser parser;
    const auto scenario = parser.parse(R"({"name": "n", "actions": [{"type": "input"}], "answers": )" + json + "}");
    return scenario ? scenario->answers : QList<CashierAnswer>();
}

FormRequest TestCashierScript::invoiceForm()
{
    const QVariantList fields{
        QVariantMap{{QStringLiteral("name"), QStringLiteral("cashCode")}, {QStringLiteral("type"), QStringLiteral("string")},
                    {QStringLiteral("value"), QStringLiteral("0000")}, {QStringLiteral("pattern"), QStringLiteral("[0-9]{1,4}")}},
        QVariantMap{{QStringLiteral("name"), QStringLiteral("invoiceDate")}, {QStringLiteral("type"), QStringLiteral("date")},
                    {QStringLiteral("format"), QStringLiteral("dd.MM.yyyy")}},
    };
    return FormRequest(QStringLiteral("InputInvoiceInfo"), {{QStringLiteral("titleId"), QStringLiteral("tessaroInvoiceInfo")},
                                                            {QStringLiteral("fields"), fields}});
}

void TestCashierScript::answersInOrder()
{
    CashierScript script(answers(R"([{"choice": 1}, {"quantity": 3}, {"price": 9.5}, {"form": {"cashCode": "12", "invoiceDate": "01.02.2024"}}])"));
    QCOMPARE(script.choose(tr::Tr(QStringLiteral("t"), QStringLiteral("T")), {QStringLiteral("a"), QStringLiteral("b")}), 1);
    QCOMPARE(script.enter(Cashier::Quantity), 3.0);
    QCOMPARE(script.enter(Cashier::Price), 9.5);
    const auto form = script.fill(invoiceForm());
    QVERIFY(form);
    QCOMPARE(form->value(QStringLiteral("cashCode")), QVariant(QStringLiteral("12")));
    QCOMPARE(script.remaining(), 0);
    QVERIFY(script.takeProblems().isEmpty());
}

void TestCashierScript::choosesByText()
{
    CashierScript script(answers(R"([{"choice": "Брак"}])"));
    QCOMPARE(script.choose(tr::Tr(), {QStringLiteral("Размер"), QStringLiteral("Брак")}), 1);
}

void TestCashierScript::wrongKindCancelsAndIsReported()
{
    CashierScript script(answers(R"([{"form": null}, {"choice": 0}])"));
    QCOMPARE(script.choose(tr::Tr(QStringLiteral("t"), QStringLiteral("Причина")), {QStringLiteral("a")}), -1);
    QCOMPARE(script.takeProblems(), QStringList{QStringLiteral("answers[0] is a form answer, but the dialog is the choice \"Причина\"; cancelled")});
    QCOMPARE(script.position(), 0);
}

void TestCashierScript::noAnswerLeftCancelsAndIsReported()
{
    CashierScript script;
    QCOMPARE(script.enter(Cashier::Quantity), std::nullopt);
    QCOMPARE(script.takeProblems(), QStringList{QStringLiteral("no answer left for the quantity input; cancelled")});
}

void TestCashierScript::choiceOutOfRange()
{
    CashierScript script(answers(R"([{"choice": 5}])"));
    QCOMPARE(script.choose(tr::Tr(QStringLiteral("t"), QStringLiteral("Причина")), {QStringLiteral("a")}), -1);
    QCOMPARE(script.takeProblems(), QStringList{QStringLiteral("answers[0]: 5 is not among the 1 items of \"Причина\"; cancelled")});
}

void TestCashierScript::formFieldsAreChecked_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("problem");
    QTest::newRow("valid") << QByteArray(R"({"cashCode": "12", "invoiceDate": "29.02.2024"})") << QString();
    QTest::newRow("initial text kept") << QByteArray(R"({"invoiceDate": "01.02.2024"})") << QString();
    QTest::newRow("too many digits") << QByteArray(R"({"cashCode": "12345", "invoiceDate": "01.02.2024"})")
                                     << QStringLiteral("answers[0]: cashCode: \"12345\" does not match [0-9]{1,4}; cancelled");
    QTest::newRow("no such day") << QByteArray(R"({"cashCode": "1", "invoiceDate": "30.02.2024"})")
                                 << QStringLiteral("answers[0]: invoiceDate: \"30.02.2024\" is not a date written dd.MM.yyyy; cancelled");
    QTest::newRow("ISO date") << QByteArray(R"({"cashCode": "1", "invoiceDate": "2024-02-01"})")
                              << QStringLiteral("answers[0]: invoiceDate: \"2024-02-01\" is not a date written dd.MM.yyyy; cancelled");
    QTest::newRow("unknown field") << QByteArray(R"({"till": "1", "invoiceDate": "01.02.2024"})")
                                   << QStringLiteral("answers[0]: the form \"InputInvoiceInfo\" has no field till; cancelled");
}

void TestCashierScript::formFieldsAreChecked()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, problem);
    CashierScript script(answers("[{\"form\": " + answer + "}]"));
    const auto form = script.fill(invoiceForm());
    QCOMPARE(bool(form), problem.isEmpty());
    QCOMPARE(script.takeProblems(), problem.isEmpty() ? QStringList() : QStringList{problem});
}

void TestCashierScript::resumesAtAPosition()
{
    CashierScript script(answers(R"([{"quantity": 1}, {"quantity": 2}])"));
    script.setPosition(1);
    QCOMPARE(script.enter(Cashier::Quantity), 2.0);
}

QTEST_GUILESS_MAIN(TestCashierScript)
#include "tst_cashierscript.moc"
