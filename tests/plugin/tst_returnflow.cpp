// The return flow: the hooks before a return by sale and the invoice input.

#include "plugintestcase.h"

#include <actionqueuecontroller.h>
#include <backbysaledocument.h>
#include <contextmanager.h>
#include <control/args/backbysale.h>
#include <dictionariesdao.h>
#include <documentlogic.h>
#include <edocumenttype.h>
#include <mockfactory.h>
#include <singleton.h>

#include <QTest>

namespace {

ActionQueueController *actionQueue()
{
    return Singleton<ActionQueueController>::instance();
}

control::Action backBySale(bool orvel)
{
    return control::Action(control::BackBySale, {{QStringLiteral("orvel"), orvel}});
}

} // namespace

class TestReturnFlow : public PluginTestCase
{
    Q_OBJECT

private slots:
    void returnOfOtherSystemPassesUntouched_data();
    void returnOfOtherSystemPassesUntouched();
    void sameActionAsksOnce();
    void enteredInvoiceBecomesSaleIdentifier();
    void cancelledInputLeavesForMenuOnce();
    void incompleteInvoiceStopsWithoutLeaving();
    void invoiceInputShowsFourFields_data();
    void invoiceInputShowsFourFields();
    void invoiceInputSkipsUnknownNames();
    void storedInvoiceIsReadBack();
    void noStoredInvoiceIsEmpty();
    void exitToMenu_data();
    void exitToMenu();
    void attemptRequiresCommonReason_data();
    void attemptRequiresCommonReason();
    void attemptReadsDocumentOfEveryPointerType_data();
    void attemptReadsDocumentOfEveryPointerType();
    void attemptWithoutDocumentIsRefused_data();
    void attemptWithoutDocumentIsRefused();
};

void TestReturnFlow::returnOfOtherSystemPassesUntouched_data()
{
    QTest::addColumn<QVariant>("orvel");
    QTest::newRow("no orvel value") << QVariant();
    QTest::newRow("orvel false") << QVariant(false);
}

void TestReturnFlow::returnOfOtherSystemPassesUntouched()
{
    QFETCH(QVariant, orvel);
    const control::Action action(control::BackBySale, {});
    if (orvel.isValid())
        action.insert(QStringLiteral("orvel"), orvel);
    const auto before = action.arguments();
    QCOMPARE(m_plugin->beforeBackBySale(action), EContext::Continue);
    QCOMPARE(action.arguments(), before);
    QVERIFY(m_host->backDialog()->shown().isEmpty());
}

void TestReturnFlow::sameActionAsksOnce()
{
    m_host->backDialog()->enqueueAnswer(ScriptedBackDialog::invoice("12", "345", "7", "2024-02-01"));
    const control::Action action = backBySale(true);
    QCOMPARE(m_plugin->beforeBackBySale(action), EContext::Continue);
    QCOMPARE(m_plugin->beforeBackBySale(action), EContext::Continue);
    QCOMPARE(m_host->backDialog()->shown().size(), 1);
    QVERIFY(action.value(QStringLiteral("processed")).toBool());
}

void TestReturnFlow::enteredInvoiceBecomesSaleIdentifier()
{
    m_host->backDialog()->enqueueAnswer(ScriptedBackDialog::invoice("12", "345", "7", "2024-02-01"));
    const control::Action action = backBySale(true);
    QTest::ignoreMessage(QtInfoMsg, "Ввод идентификатора инвойса");
    QTest::ignoreMessage(QtInfoMsg, "Ввод информации об оригинальном инвойсе");
    QTest::ignoreMessage(QtInfoMsg, "Введен номер инвойса: 0/0/0012/000345; номер ТЦ: 7");
    QCOMPARE(m_plugin->beforeBackBySale(action), EContext::Continue);
    QCOMPARE(control::args::BackBySale(action).identifier(), QStringLiteral("000701022024000012000345"));
    QVERIFY(actionQueue()->queuedActions().isEmpty());
}

void TestReturnFlow::cancelledInputLeavesForMenuOnce()
{
    const control::Action action = backBySale(true);
    QCOMPARE(m_plugin->beforeBackBySale(action), EContext::Stop);
    const auto queued = actionQueue()->queuedActions();
    QCOMPARE(queued.size(), 1);
    QCOMPARE(queued.first().getType(), control::ExitToMenu);
    QVERIFY(!action.contains(QStringLiteral("identifier")));
    QVERIFY(!m_plugin->invoiceInfo.valid());
}

void TestReturnFlow::incompleteInvoiceStopsWithoutLeaving()
{
    m_host->backDialog()->enqueueAnswer(ScriptedBackDialog::invoice("", "345", "7", "2024-02-01"));
    const control::Action action = backBySale(true);
    QCOMPARE(m_plugin->beforeBackBySale(action), EContext::Stop);
    QVERIFY(actionQueue()->queuedActions().isEmpty());
    QVERIFY(!action.contains(QStringLiteral("identifier")));
}

void TestReturnFlow::invoiceInputShowsFourFields_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("date");
    QTest::addColumn<QString>("labelId");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("format");
    QTest::newRow("till") << 0 << "cashCode" << false << "tessaroInvoiceInfoCashNumber" << "Номер кассы" << "0000" << "[0-9]{1,4}" << "";
    QTest::newRow("invoice") << 1 << "invoiceNumber" << false << "tessaroInvoiceInfoInvoiceNumber" << "Номер инвойса" << "000000" << "[0-9]{1,6}" << "";
    QTest::newRow("store") << 2 << "storeNumber" << false << "tessaroInvoiceInfoStore" << "Номер ТЦ" << "7" << "" << "";
    QTest::newRow("date") << 3 << "invoiceDate" << true << "tessaroInvoiceInfoDate" << "Дата" << "" << "" << "dd.MM.yyyy";
}

void TestReturnFlow::invoiceInputShowsFourFields()
{
    QFETCH(int, index);
    QFETCH(QString, name);
    QFETCH(bool, date);
    QFETCH(QString, labelId);
    QFETCH(QString, label);
    QFETCH(QString, value);
    QFETCH(QString, pattern);
    QFETCH(QString, format);
    m_plugin->inputInvoiceInfo();
    const auto shown = m_host->backDialog()->shown();
    QCOMPARE(shown.size(), 1);
    const InputMultiTextParams &params = shown.first();
    QCOMPARE(params.title(), tr::Tr(QStringLiteral("tessaroInvoiceInfo"), QStringLiteral("Ввод информации об оригинальном инвойсе")));
    QCOMPARE(params.button(), tr::Tr(QStringLiteral("tessaroInvoiceInfoOk"), QStringLiteral("Ввод")));
    QCOMPARE(params.fields().size(), 4);
    const InputMultiTextParams::Field field = params.fields().at(index);
    QCOMPARE(field.name, name);
    QCOMPARE(field.type == InputMultiTextParams::Date, date);
    QCOMPARE(field.label, tr::Tr(labelId, label));
    QCOMPARE(field.value, value);
    QCOMPARE(field.pattern, pattern);
    QCOMPARE(field.format, format);
}

void TestReturnFlow::invoiceInputSkipsUnknownNames()
{
    QVariantMap answer = ScriptedBackDialog::invoice("12", "345", "7", "2024-02-01");
    answer.insert(QStringLiteral("comment"), QStringLiteral("лишнее"));
    m_host->backDialog()->enqueueAnswer(answer);
    const InvoiceInfo info = m_plugin->inputInvoiceInfo();
    QCOMPARE(info.cashCode, QStringLiteral("12"));
    QCOMPARE(info.invoiceNumber, QStringLiteral("345"));
    QCOMPARE(info.storeNumber, QStringLiteral("7"));
    QCOMPARE(info.invoiceDate, QDate(2024, 2, 1));
    QCOMPARE(m_plugin->invoiceInfo.invoiceIdRaw(), info.invoiceIdRaw());
}

void TestReturnFlow::storedInvoiceIsReadBack()
{
    const auto document = m_host->document(EDocumentType::Sale);
    m_plugin->setDocument(document);
    InvoiceInfo info;
    info.cashCode = QStringLiteral("12");
    info.invoiceNumber = QStringLiteral("345");
    info.storeNumber = QStringLiteral("7");
    info.invoiceDate = QDate(2024, 2, 1);
    m_plugin->storeInvoiceInfo(info);

    QCOMPARE(document->changeCount(), 1);
    QCOMPARE(document->getDocumentProperty(QStringLiteral("invoiceInfo")).toMap(), info.toMap());
    QCOMPARE(document->getDocumentProperty(QStringLiteral("originalInvoiceIDRaw")).toString(), QStringLiteral("0/0/0012/000345"));
    QCOMPARE(document->getDocumentProperty(QStringLiteral("originalInvoiceID")).toString(), QStringLiteral("000012000345"));
    const InvoiceInfo read = m_plugin->getInvoiceInfo();
    QCOMPARE(read.documentId(), info.documentId());
}

void TestReturnFlow::noStoredInvoiceIsEmpty()
{
    QVERIFY(!m_plugin->getInvoiceInfo().valid());
    m_plugin->setDocument(m_host->document(EDocumentType::Sale));
    const InvoiceInfo info = m_plugin->getInvoiceInfo();
    QVERIFY(info.cashCode.isEmpty());
    QVERIFY(info.storeNumber.isEmpty());
    QVERIFY(info.invoiceDate.isNull());
}

void TestReturnFlow::exitToMenu_data()
{
    QTest::addColumn<int>("context");
    QTest::addColumn<bool>("leaves");
    QTest::newRow("document") << int(EContext::Document) << true;
    QTest::newRow("payment") << int(EContext::Payment) << true;
    QTest::newRow("main menu") << int(EContext::Menu) << false;
}

void TestReturnFlow::exitToMenu()
{
    QFETCH(int, context);
    QFETCH(bool, leaves);
    const control::Action waiting(control::Input, {});
    actionQueue()->addAction(waiting, false);
    Singleton<ContextManager>::instance()->setCurrentContext(EContext::Code(context));
    m_plugin->exitToMenu();
    const auto queued = actionQueue()->queuedActions();
    QCOMPARE(queued.size(), leaves ? 2 : 1);
    if (leaves) {
        // Put before the waiting actions.
        QCOMPARE(queued.first().getType(), control::ExitToMenu);
        QCOMPARE(queued.first().arguments(), (control::Action::Arguments{{QStringLiteral("shutdown"), false}}));
    }
}

void TestReturnFlow::attemptRequiresCommonReason_data()
{
    QTest::addColumn<int>("choice");
    QTest::addColumn<int>("result");
    QTest::addColumn<QVariant>("reason");
    QTest::newRow("reason chosen") << 1 << int(EContext::Continue) << QVariant(5);
    QTest::newRow("choice cancelled") << -1 << int(EContext::Stop) << QVariant();
}

void TestReturnFlow::attemptRequiresCommonReason()
{
    QFETCH(int, choice);
    QFETCH(int, result);
    QFETCH(QVariant, reason);
    Singleton<DictionariesDao>::instance()->setBackReasons(2, {{3, QStringLiteral("Брак")}, {5, QStringLiteral("Не подошел размер")}});
    m_host->dialog()->enqueueChoice(choice);
    const auto document = m_host->backBySale(QStringLiteral("000100122024000012000345"));
    const control::Action action(control::AttemptToBackBySale,
                                 {{QStringLiteral("document"), QVariant::fromValue(document.staticCast<AbstractDocument>())}});
    if (result == EContext::Continue)
        QTest::ignoreMessage(QtInfoMsg, "Выбрана общая причина возврата: 5");
    QCOMPARE(m_plugin->beforeAttemptToBackBySale(action), EContext::Result(result));
    QCOMPARE(document->getCommonBackReason(), reason);
    QCOMPARE(m_host->dialog()->choices().size(), 1);
}

void TestReturnFlow::attemptReadsDocumentOfEveryPointerType_data()
{
    QTest::addColumn<QString>("stored");
    QTest::newRow("as AbstractDocument") << "AbstractDocument";
    QTest::newRow("as BackDocument") << "BackDocument";
    QTest::newRow("as BackBySaleDocument") << "BackBySaleDocument";
}

void TestReturnFlow::attemptReadsDocumentOfEveryPointerType()
{
    QFETCH(QString, stored);
    Singleton<DictionariesDao>::instance()->setBackReasons(2, {{3, QStringLiteral("Брак")}, {5, QStringLiteral("Не подошел размер")}});
    m_host->dialog()->enqueueChoice(1);
    const auto document = m_host->backBySale(QStringLiteral("000100122024000012000345"));
    const QHash<QString, QVariant> values{
        {QStringLiteral("AbstractDocument"), QVariant::fromValue(document.staticCast<AbstractDocument>())},
        {QStringLiteral("BackDocument"), QVariant::fromValue(document.staticCast<BackDocument>())},
        {QStringLiteral("BackBySaleDocument"), QVariant::fromValue(document)},
    };
    const control::Action action(control::AttemptToBackBySale, {{QStringLiteral("document"), values.value(stored)}});

    QTest::ignoreMessage(QtInfoMsg, "Выбрана общая причина возврата: 5");
    QCOMPARE(m_plugin->beforeAttemptToBackBySale(action), EContext::Continue);
    QCOMPARE(document->getCommonBackReason(), QVariant(5));
    QCOMPARE(m_host->dialog()->choices().size(), 1);
}

void TestReturnFlow::attemptWithoutDocumentIsRefused_data()
{
    QTest::addColumn<QVariant>("document");
    QTest::newRow("no value") << QVariant();
    QTest::newRow("null pointer") << QVariant::fromValue(QSharedPointer<AbstractDocument>());
    QTest::newRow("no document") << QVariant(QStringLiteral("document"));
}

void TestReturnFlow::attemptWithoutDocumentIsRefused()
{
    QFETCH(QVariant, document);
    // A host whose reason choice says yes to anything.
    struct AgreeingLogic : DocumentLogic
    {
        int asked = 0;
        bool chooseCommonBackReason(const QSharedPointer<AbstractDocument> &, const QStringList &) override
        {
            ++asked;
            return true;
        }
    };
    const auto logic = QSharedPointer<AgreeingLogic>::create();
    MockFactory<DocumentLogic>::setInstance(logic);
    control::Action action(control::AttemptToBackBySale, {});
    if (document.isValid())
        action.insert(QStringLiteral("document"), document);

    QTest::ignoreMessage(QtCriticalMsg, "Действие 227 без документа отклонено");
    QCOMPARE(m_plugin->beforeAttemptToBackBySale(action), EContext::Stop);
    QCOMPARE(logic->asked, 0);
}

QTEST_GUILESS_MAIN(TestReturnFlow)
#include "tst_returnflow.moc"
