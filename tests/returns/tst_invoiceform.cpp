// The form "InputInvoiceInfo" in a real Qt Quick window, shown by the plug-in's
// invoice input through its view, as the till shows it; a cashier types and
// clicks.

#include "plugin/backplugin.h"
#include "returns/backview.h"

#include <actionqueuecontroller.h>
#include <contextmanager.h>
#include <qml/qmlbasedgui.h>
#include <singleton.h>
#include <support/invoiceformchecks.h>
#include <testing/testhost.h>

#include <QJSValue>
#include <QQmlContext>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>

#include <functional>

namespace {

// What the cashier does with the form; the form is shown in \a window.
using Cashier = std::function<void(QQuickView &window)>;

// The items of the form's visual tree, depth first.
QList<QQuickItem *> items(QQuickItem *root)
{
    QList<QQuickItem *> found{root};
    const auto children = root->childItems();
    for (QQuickItem *child : children)
        found << items(child);
    return found;
}

QQuickItem *item(QQuickView &window, const QString &objectName)
{
    const auto all = items(window.rootObject());
    const auto named = std::find_if(all.cbegin(), all.cend(), [&](const QQuickItem *candidate) {
        return candidate->objectName() == objectName;
    });
    return named == all.cend() ? nullptr : *named;
}

// A property of the item named \a objectName; invalid when there is no such item.
QVariant itemProperty(QQuickView &window, const QString &objectName, const char *name)
{
    const QQuickItem *named = item(window, objectName);
    return named ? named->property(name) : QVariant();
}

QString fieldText(QQuickView &window, const QString &field)
{
    return itemProperty(window, QStringLiteral("field_") + field, "text").toString();
}

void click(QQuickView &window, const QString &objectName)
{
    QQuickItem *target = item(window, objectName);
    QVERIFY2(target, qPrintable(objectName));
    const QPointF centre = target->mapToScene(QPointF(target->width() / 2, target->height() / 2));
    QTest::mouseClick(&window, Qt::LeftButton, Qt::NoModifier, centre.toPoint());
}

// Replaces the text of a field as a cashier does: click into it, select all, type.
void type(QQuickView &window, const QString &field, const QString &text)
{
    click(window, QStringLiteral("field_") + field);
    QTest::keySequence(&window, QKeySequence::SelectAll);
    QTest::keyClick(&window, Qt::Key_Backspace);
    for (const QChar character : text)
        QTest::sendKeyEvent(QTest::Click, &window, Qt::Key_unknown, QString(character), Qt::NoModifier);
    QCOMPARE(fieldText(window, field), text);
}

bool confirmEnabled(QQuickView &window)
{
    return itemProperty(window, QStringLiteral("confirmButton"), "enabled").toBool();
}

// Every text shown by a label of the form.
QStringList labels(QQuickView &window)
{
    QStringList texts;
    const auto all = items(window.rootObject());
    for (const QQuickItem *child : all) {
        if (child->inherits("QQuickLabel"))
            texts << child->property("text").toString();
    }
    return texts;
}

} // namespace

class TestInvoiceForm : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void fieldsShownFromParams();
    void failingFieldBlocksConfirm_data();
    void failingFieldBlocksConfirm();
    void confirmAnswersData();
    void cancelAnswersNothing();
    void escapeCancels();
    void enterConfirms_data();
    void enterConfirms();

private:
    /// Presents forms as the till does, with \a cashier acting on them.
    void presentWith(const Cashier &cashier);

    std::unique_ptr<TestHost> m_host;
    std::unique_ptr<tessaro::BackPlugin> m_plugin;
    int m_shown = 0;
};

void TestInvoiceForm::initTestCase()
{
    qputenv("QT_QUICK_CONTROLS_STYLE", "Basic");
}

void TestInvoiceForm::init()
{
    m_host = std::make_unique<TestHost>();
    Singleton<ContextManager>::instance()->setCurrentContext(EContext::Document);
    m_plugin = std::make_unique<tessaro::BackPlugin>();
    Singleton<qml::QmlBasedGui>::instance()->addView(QSharedPointer<tessaro::BackView>::create());
    m_shown = 0;
}

void TestInvoiceForm::cleanup()
{
    m_plugin.reset();
    m_host.reset();
}

// The till's presenter: loads the descriptor's form into a window, lets it set
// up the context, and turns the form's signals into the answer event.
void TestInvoiceForm::presentWith(const Cashier &cashier)
{
    Singleton<qml::QmlBasedGui>::instance()->setPresenter([this, cashier](const qml::ViewDescriptor &descriptor) {
        ++m_shown;
        QQuickView window;
        window.setResizeMode(QQuickView::SizeViewToRootObject);
        descriptor.setup(window.rootContext());
        window.setSource(tessaro::BackView::formUrl(descriptor.form));
        if (window.status() != QQuickView::Ready) {
            qWarning() << window.errors();
            return Event();
        }
        QSignalSpy answered(window.rootObject(), SIGNAL(answered(QVariant)));
        QSignalSpy cancelled(window.rootObject(), SIGNAL(cancelled()));
        window.show();
        if (!QTest::qWaitForWindowExposed(&window))
            return Event();
        cashier(window);
        if (answered.size() != 1 || !cancelled.isEmpty())
            return Event(descriptor.event.getCode());
        QVariant data = answered.first().first();
        if (data.canConvert<QJSValue>())
            data = data.value<QJSValue>().toVariant();
        return Event(descriptor.event.getCode(), {{QStringLiteral("data"), data.toMap()}});
    });
}

void TestInvoiceForm::fieldsShownFromParams()
{
    presentWith([](QQuickView &window) {
        const QStringList shown = labels(window);
        for (const QString &text : {QStringLiteral("Ввод информации об оригинальном инвойсе"), QStringLiteral("Номер кассы"),
                                    QStringLiteral("Номер инвойса"), QStringLiteral("Номер ТЦ"), QStringLiteral("Дата")})
            QVERIFY2(shown.contains(text), qPrintable(text));
        QCOMPARE(fieldText(window, QStringLiteral("cashCode")), QStringLiteral("0000"));
        QCOMPARE(fieldText(window, QStringLiteral("invoiceNumber")), QStringLiteral("000000"));
        QCOMPARE(fieldText(window, QStringLiteral("storeNumber")), QStringLiteral("7"));
        QCOMPARE(fieldText(window, QStringLiteral("invoiceDate")), QString());
        QCOMPARE(itemProperty(window, QStringLiteral("field_invoiceDate"), "placeholderText").toString(), QStringLiteral("dd.mm.yyyy"));
        QCOMPARE(itemProperty(window, QStringLiteral("confirmButton"), "text").toString(), QStringLiteral("Ввод"));
        // The date is still missing.
        QVERIFY(!confirmEnabled(window));
        click(window, QStringLiteral("cancelButton"));
    });
    m_plugin->inputInvoiceInfo();
    QCOMPARE(m_shown, 1);
}

void TestInvoiceForm::failingFieldBlocksConfirm_data()
{
    addInvoiceFormChecks();
}

void TestInvoiceForm::failingFieldBlocksConfirm()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(bool, passes);
    presentWith([&](QQuickView &window) {
        if (field != QLatin1String("invoiceDate"))
            type(window, QStringLiteral("invoiceDate"), QStringLiteral("01.02.2024"));
        QVERIFY(confirmEnabled(window) || field == QLatin1String("invoiceDate"));
        type(window, field, text);
        QCOMPARE(confirmEnabled(window), passes);
        // A click on a disabled button does not answer.
        click(window, QStringLiteral("confirmButton"));
    });
    const InvoiceInfo info = m_plugin->inputInvoiceInfo();
    QCOMPARE(m_shown, 1);
    QCOMPARE(info.valid(), passes);
}

void TestInvoiceForm::confirmAnswersData()
{
    presentWith([](QQuickView &window) {
        type(window, QStringLiteral("cashCode"), QStringLiteral("12"));
        type(window, QStringLiteral("invoiceNumber"), QStringLiteral("345"));
        type(window, QStringLiteral("invoiceDate"), QStringLiteral("01.02.2024"));
        QVERIFY(confirmEnabled(window));
        const QImage screenshot = window.grabWindow();
        QVERIFY(!screenshot.isNull());
        const QString file = QStringLiteral(TESSARO_SCREENSHOT_DIR "/invoice-form.png");
        QVERIFY2(screenshot.save(file), qPrintable(file));
        click(window, QStringLiteral("confirmButton"));
    });
    QTest::ignoreMessage(QtInfoMsg, "Ответ: {\"cashCode\":\"12\",\"invoiceDate\":\"2024-02-01\",\"invoiceNumber\":\"345\",\"storeNumber\":\"7\"}");
    const InvoiceInfo info = m_plugin->inputInvoiceInfo();
    QCOMPARE(info.cashCode, QStringLiteral("12"));
    QCOMPARE(info.invoiceNumber, QStringLiteral("345"));
    QCOMPARE(info.storeNumber, QStringLiteral("7"));
    QCOMPARE(info.invoiceDate, QDate(2024, 2, 1));
    QCOMPARE(info.documentId(), QStringLiteral("000701022024000012000345"));
    QVERIFY(Singleton<ActionQueueController>::instance()->queuedActions().isEmpty());
}

void TestInvoiceForm::cancelAnswersNothing()
{
    presentWith([](QQuickView &window) {
        type(window, QStringLiteral("cashCode"), QStringLiteral("12"));
        click(window, QStringLiteral("cancelButton"));
    });
    QTest::ignoreMessage(QtInfoMsg, "Ответ: ввод отменен");
    const InvoiceInfo info = m_plugin->inputInvoiceInfo();
    QVERIFY(info.cashCode.isEmpty());
    QCOMPARE(Singleton<ActionQueueController>::instance()->queuedActions().size(), 1);
}

void TestInvoiceForm::escapeCancels()
{
    presentWith([](QQuickView &window) {
        type(window, QStringLiteral("invoiceDate"), QStringLiteral("01.02.2024"));
        QTest::keyClick(&window, Qt::Key_Escape);
    });
    QTest::ignoreMessage(QtInfoMsg, "Ответ: ввод отменен");
    QVERIFY(!m_plugin->inputInvoiceInfo().valid());
}

void TestInvoiceForm::enterConfirms_data()
{
    QTest::addColumn<QString>("date");
    QTest::addColumn<bool>("answered");
    QTest::newRow("every field passes") << QStringLiteral("01.02.2024") << true;
    QTest::newRow("date missing") << QString() << false;
}

void TestInvoiceForm::enterConfirms()
{
    QFETCH(QString, date);
    QFETCH(bool, answered);
    presentWith([&](QQuickView &window) {
        type(window, QStringLiteral("invoiceDate"), date);
        QTest::keyClick(&window, Qt::Key_Return);
    });
    QCOMPARE(m_plugin->inputInvoiceInfo().valid(), answered);
}

QTEST_MAIN(TestInvoiceForm)
#include "tst_invoiceform.moc"
