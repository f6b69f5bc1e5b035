// The cashier at the terminal of `tessaro-till shell`: the invoice form asked
// field by field applies the checks of the QML form.

#include "terminalcashier.h"

#include <inputmultitextparams.h>
#include <support/invoiceformchecks.h>

#include <QTest>
#include <QTextStream>

namespace {

InputMultiTextParams::Field field(const QString &name, const QString &value, const QString &pattern)
{
    InputMultiTextParams::Field field;
    field.name = name;
    field.label = tr::Tr(name, name);
    field.value = value;
    field.pattern = pattern;
    return field;
}

// The invoice form as the plug-in asks for it.
till::FormRequest invoiceForm()
{
    InputMultiTextParams params;
    params.setTitle(tr::Tr(QStringLiteral("tessaroInvoiceInfo"), QStringLiteral("Ввод информации об оригинальном инвойсе")));
    params.addField(field(QStringLiteral("cashCode"), QStringLiteral("0000"), QStringLiteral("[0-9]{1,4}")));
    params.addField(field(QStringLiteral("invoiceNumber"), QStringLiteral("000000"), QStringLiteral("[0-9]{1,6}")));
    params.addField(field(QStringLiteral("storeNumber"), QStringLiteral("7"), QString()));
    InputMultiTextParams::Field date = field(QStringLiteral("invoiceDate"), QString(), QString());
    date.type = InputMultiTextParams::Date;
    date.format = QStringLiteral("dd.MM.yyyy");
    params.addField(date);
    return till::FormRequest(QStringLiteral("InputInvoiceInfo"),
                             params.getEvent(78).value(QStringLiteral("params")).toMap());
}

} // namespace

class TestTerminalCashier : public QObject
{
    Q_OBJECT

private slots:
    void formChecksAsTheQmlForm_data();
    void formChecksAsTheQmlForm();
    void messagesKeepToTheirLines();
};

void TestTerminalCashier::formChecksAsTheQmlForm_data()
{
    addInvoiceFormChecks();
}

void TestTerminalCashier::formChecksAsTheQmlForm()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(bool, passes);
    if (text.isEmpty())
        QSKIP("at the terminal an empty answer keeps the field's initial text");
    const QMap<QString, QString> good{{QStringLiteral("cashCode"), QStringLiteral("12")},
                                      {QStringLiteral("invoiceNumber"), QStringLiteral("345")},
                                      {QStringLiteral("storeNumber"), QStringLiteral("7")},
                                      {QStringLiteral("invoiceDate"), QStringLiteral("01.02.2024")}};
    // The field under test gets the row's text, the others good ones.
    QString typed;
    const till::FormRequest form = invoiceForm();
    for (const till::FormRequest::Field &each : form.fields())
        typed += (each.name == field ? text : good.value(each.name)) + QLatin1Char('\n');
    QTextStream in(&typed, QIODevice::ReadOnly);
    QString shown;
    QTextStream out(&shown, QIODevice::WriteOnly);

    const std::optional<QVariantMap> answer = till::TerminalCashier(&in, &out).fill(form);

    // A refused text is named, and the field asked again.
    const bool refused = shown.contains(QStringLiteral("%1: \"%2\"").arg(field, text));
    QVERIFY2(refused != passes, qPrintable(shown));
    if (passes) {
        QVERIFY(answer);
        QCOMPARE(answer->value(field).toString(), text);
    }
}

void TestTerminalCashier::messagesKeepToTheirLines()
{
    QString input = QStringLiteral("1\n");
    QString output;
    QTextStream in(&input);
    QTextStream out(&output);
    till::TerminalCashier cashier(&in, &out);

    // A service's error text that would clear the screen and forge a line of its own.
    cashier.read(tr::Tr(QStringLiteral("tessaroError"), QStringLiteral("\x1b[2JОшибка\r\n  i Готово")), 1);
    QCOMPARE(cashier.choose(tr::Tr(QStringLiteral("t"), QStringLiteral("Причина\x1b[31m")), {QStringLiteral("Брак\nДа")}), 0);
    out.flush();

    QCOMPARE(output, QStringLiteral("  ! \\x1b[2JОшибка\\r\\n  i Готово  [tessaroError]\n"
                                    "  ? Причина\\x1b[31m\n"
                                    "    1. Брак\\nДа\n"
                                    "    number (empty cancels): "));
}

QTEST_GUILESS_MAIN(TestTerminalCashier)
#include "tst_terminalcashier.moc"
