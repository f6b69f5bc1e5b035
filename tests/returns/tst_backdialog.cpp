// The invoice dialog and its view on the host's QML interface.

#include "returns/backdialog.h"
#include "returns/backview.h"

#include <inputmultitextparams.h>
#include <qml/qmlbasedgui.h>
#include <singleton.h>
#include <testing/testhost.h>

#include <QQmlContext>
#include <QQmlEngine>
#include <QTest>

namespace {

InputMultiTextParams twoFields()
{
    InputMultiTextParams params;
    params.setTitle(tr::Tr(QStringLiteral("tessaroInvoiceInfo"), QStringLiteral("Ввод информации об оригинальном инвойсе")));
    params.setButton(tr::Tr(QStringLiteral("tessaroInvoiceInfoOk"), QStringLiteral("Ввод")));
    InputMultiTextParams::Field till;
    till.name = QStringLiteral("cashCode");
    till.label = tr::Tr(QStringLiteral("tessaroInvoiceInfoCashNumber"), QStringLiteral("Номер кассы"));
    till.value = QStringLiteral("0000");
    till.pattern = QStringLiteral("[0-9]{1,4}");
    params.addField(till);
    InputMultiTextParams::Field date;
    date.name = QStringLiteral("invoiceDate");
    date.type = InputMultiTextParams::Date;
    date.label = tr::Tr(QStringLiteral("tessaroInvoiceInfoDate"), QStringLiteral("Дата"));
    date.format = QStringLiteral("dd.MM.yyyy");
    params.addField(date);
    return params;
}

} // namespace

class TestBackDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void viewAnswersOnlyItsEvent_data();
    void viewAnswersOnlyItsEvent();
    void viewSetsParamsOfForm();
    void formsAreFoundInResources();
    void dialogShowsFormAndReturnsAnswer();
    void cancelledInputReturnsEmptyMap_data();
    void cancelledInputReturnsEmptyMap();
    void factoryMakesDialog();

private:
    std::unique_ptr<TestHost> m_host;
    QList<qml::ViewDescriptor> m_presented;
};

void TestBackDialog::init()
{
    m_host = std::make_unique<TestHost>();
    m_presented.clear();
    Singleton<qml::QmlBasedGui>::instance()->addView(QSharedPointer<tessaro::BackView>::create());
}

void TestBackDialog::cleanup()
{
    m_host.reset();
}

void TestBackDialog::viewAnswersOnlyItsEvent_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("form");
    QTest::newRow("78") << 78 << QStringLiteral("InputInvoiceInfo");
    QTest::newRow("77") << 77 << QString();
    QTest::newRow("79") << 79 << QString();
    QTest::newRow("0") << 0 << QString();
}

void TestBackDialog::viewAnswersOnlyItsEvent()
{
    QFETCH(int, code);
    QFETCH(QString, form);
    tessaro::BackView view;
    QCOMPARE(int(view.getCode()), 78);
    Event event = twoFields().getEvent(code);
    event.insert(QStringLiteral("form"), QStringLiteral("InputInvoiceInfo"));
    const qml::ViewDescriptor descriptor = view.get(event);
    QCOMPARE(descriptor.form, form);
    QCOMPARE(descriptor.isEmpty(), form.isEmpty());
    QCOMPARE(bool(descriptor.setup), !form.isEmpty());
    if (!form.isEmpty())
        QCOMPARE(descriptor.event.values(), event.values());
}

void TestBackDialog::viewSetsParamsOfForm()
{
    tessaro::BackView view;
    Event event = twoFields().getEvent(78);
    event.insert(QStringLiteral("form"), QStringLiteral("InputInvoiceInfo"));
    QQmlEngine engine;
    QQmlContext context(&engine);
    view.get(event).setup(&context);
    QCOMPARE(context.contextProperty(QStringLiteral("params")), event.value(QStringLiteral("params")));
}

void TestBackDialog::formsAreFoundInResources()
{
    QCOMPARE(tessaro::BackView::formUrl(QStringLiteral("InputInvoiceInfo")),
             QUrl(QStringLiteral("qrc:/qt/qml/Tessaro/Returns/InputInvoiceInfo.qml")));
    QVERIFY(QFile::exists(QStringLiteral(":/qt/qml/Tessaro/Returns/InputInvoiceInfo.qml")));
}

void TestBackDialog::dialogShowsFormAndReturnsAnswer()
{
    const QVariantMap data{{QStringLiteral("cashCode"), QStringLiteral("12")},
                           {QStringLiteral("invoiceDate"), QStringLiteral("2024-02-01")}};
    Singleton<qml::QmlBasedGui>::instance()->setPresenter([&](const qml::ViewDescriptor &descriptor) {
        m_presented << descriptor;
        return Event(78, {{QStringLiteral("data"), data}});
    });
    tessaro::BackDialog dialog;
    QTest::ignoreMessage(QtInfoMsg, "Ввод идентификатора инвойса");
    QTest::ignoreMessage(QtInfoMsg, "Ответ: {\"cashCode\":\"12\",\"invoiceDate\":\"2024-02-01\"}");
    QCOMPARE(dialog.inputInvoiceInfo(twoFields()), data);

    QCOMPARE(m_presented.size(), 1);
    const Event shown = m_presented.first().event;
    QCOMPARE(shown.getCode(), 78);
    QCOMPARE(shown.value(QStringLiteral("form")).toString(), QStringLiteral("InputInvoiceInfo"));
    QCOMPARE(shown.value(QStringLiteral("params")), twoFields().getEvent(78).value(QStringLiteral("params")));
    QCOMPARE(m_presented.first().form, QStringLiteral("InputInvoiceInfo"));
    QVERIFY(!dialog.isActive());
}

void TestBackDialog::cancelledInputReturnsEmptyMap_data()
{
    QTest::addColumn<bool>("presenter");
    QTest::newRow("form cancelled") << true;
    QTest::newRow("nothing shows forms") << false;
}

void TestBackDialog::cancelledInputReturnsEmptyMap()
{
    QFETCH(bool, presenter);
    if (presenter) {
        Singleton<qml::QmlBasedGui>::instance()->setPresenter([this](const qml::ViewDescriptor &descriptor) {
            m_presented << descriptor;
            return Event(78);
        });
    }
    tessaro::BackDialog dialog;
    QTest::ignoreMessage(QtInfoMsg, "Ответ: ввод отменен");
    QVERIFY(dialog.inputInvoiceInfo(twoFields()).isEmpty());
    QCOMPARE(m_presented.size(), presenter ? 1 : 0);
}

void TestBackDialog::factoryMakesDialog()
{
    QVERIFY(MockFactory<tessaro::BackDialog>::create());
    QVERIFY(MockFactory<tessaro::BackDialog>::create() != MockFactory<tessaro::BackDialog>::create());
}

QTEST_GUILESS_MAIN(TestBackDialog)
#include "tst_backdialog.moc"
