// Return reasons: the handler that chooses them and the check of the reason table.

#include "plugintestcase.h"

#include <control/args/core.h>
#include <dictionariesdao.h>
#include <edocumenttype.h>
#include <singleton.h>

#include <QTest>

namespace {

const QList<DictionariesDao::BackReason> TwoReasons{{3, QStringLiteral("Брак")}, {5, QStringLiteral("Не подошел размер")}};

void setReasons(const QList<DictionariesDao::BackReason> &reasons)
{
    Singleton<DictionariesDao>::instance()->setBackReasons(2, reasons);
}

QVariant reasonOf(const QSharedPointer<GoodsItem> &position)
{
    return position->getAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"));
}

control::Action choiceFor(const QSharedPointer<GoodsItem> &position)
{
    const control::Action action(control::SelectBackReason, {});
    control::args::Core(action).setPosition(position);
    return action;
}

} // namespace

class TestBackReasons : public PluginTestCase
{
    Q_OBJECT

private slots:
    void init();
    void emptyTableLetsActionGoOn();
    void singleReasonIsTakenWithoutAsking();
    void chosenReasonIsStored();
    void cancelKeepsEarlierReason();
    void cancelTakesCommonReason();
    void cancelWithoutAnyReasonLeavesNone();
    void cancelledCommonChoiceRestoresEarlierReason_data();
    void cancelledCommonChoiceRestoresEarlierReason();
    void commonChoiceReplacesEarlierReason();
    void targetIsCaseSensitive();
    void positionFoundByNumber_data();
    void positionFoundByNumber();
    void tableKindComesFromDocument();
    void checkBackReasons_data();
    void checkBackReasons();

private:
    QSharedPointer<AbstractDocument> m_document;
    QSharedPointer<GoodsItem> m_position;
};

// A return that knows its invoice, with one position, bound to the plug-in.
void TestBackReasons::init()
{
    PluginTestCase::init();
    m_document = m_host->returnWithInvoice();
    m_position = QSharedPointer<GoodsItem>::create();
    m_document->addGoodsItem(m_position);
    m_plugin->setDocument(m_document);
}

void TestBackReasons::emptyTableLetsActionGoOn()
{
    QCOMPARE(m_plugin->selectBackReason(control::Action(control::SelectBackReason, {})), EContext::Continue);
    QVERIFY(m_host->dialog()->messages().isEmpty());
    QVERIFY(m_host->dialog()->choices().isEmpty());
}

void TestBackReasons::singleReasonIsTakenWithoutAsking()
{
    setReasons({{4, QStringLiteral("Брак")}});
    QTest::ignoreMessage(QtInfoMsg, "Для позиции 1 выбрана причина Брак");
    QCOMPARE(m_plugin->selectBackReason(choiceFor(m_position)), EContext::Continue);
    QCOMPARE(reasonOf(m_position), QVariant(4));
    QVERIFY(m_host->dialog()->choices().isEmpty());
}

void TestBackReasons::chosenReasonIsStored()
{
    setReasons(TwoReasons);
    m_host->dialog()->enqueueChoice(1);
    QCOMPARE(m_plugin->selectBackReason(choiceFor(m_position)), EContext::Continue);
    QCOMPARE(reasonOf(m_position), QVariant(5));
    const auto choices = m_host->dialog()->choices();
    QCOMPARE(choices.size(), 1);
    QCOMPARE(choices.first().title, tr::Tr(QStringLiteral("tessaroPositionBackReason"), QStringLiteral("Выберите причину возврата для товара")));
    QCOMPARE(choices.first().items, (QStringList{QStringLiteral("Брак"), QStringLiteral("Не подошел размер")}));
}

void TestBackReasons::cancelKeepsEarlierReason()
{
    setReasons(TwoReasons);
    m_document->setCommonBackReason(5);
    m_position->setAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"), 3);
    QTest::ignoreMessage(QtInfoMsg, "Сохранена установленная ранее причина возврата 3");
    QCOMPARE(m_plugin->selectBackReason(choiceFor(m_position)), EContext::Continue);
    QCOMPARE(reasonOf(m_position), QVariant(3));
}

void TestBackReasons::cancelTakesCommonReason()
{
    setReasons(TwoReasons);
    m_document->setCommonBackReason(5);
    QTest::ignoreMessage(QtInfoMsg, "Для позиции 1 установлена общая причина 5");
    QCOMPARE(m_plugin->selectBackReason(choiceFor(m_position)), EContext::Continue);
    QCOMPARE(reasonOf(m_position), QVariant(5));
}

// The advice note then carries the common reason's integer form, 0.
void TestBackReasons::cancelWithoutAnyReasonLeavesNone()
{
    setReasons(TwoReasons);
    QTest::ignoreMessage(QtInfoMsg, "Общая причина возврата не установлена");
    QCOMPARE(m_plugin->selectBackReason(choiceFor(m_position)), EContext::Continue);
    QVERIFY(reasonOf(m_position).isNull());
    QVERIFY(!m_position->additionalData().value(QStringLiteral("tessaro")).contains(QStringLiteral("backReason")));
    QCOMPARE(m_document->getCommonBackReason().toInt(), 0);
}

void TestBackReasons::cancelledCommonChoiceRestoresEarlierReason_data()
{
    QTest::addColumn<QVariant>("earlier");
    QTest::newRow("reason 5") << QVariant(5);
    QTest::newRow("none") << QVariant();
}

void TestBackReasons::cancelledCommonChoiceRestoresEarlierReason()
{
    QFETCH(QVariant, earlier);
    setReasons(TwoReasons);
    m_document->setCommonBackReason(earlier);
    const control::Action action(control::SelectBackReason, {{QStringLiteral("target"), QStringLiteral("document")}});
    QCOMPARE(m_plugin->selectBackReason(action), EContext::Continue);
    // The cashier was asked anew, although a reason was set.
    QCOMPARE(m_host->dialog()->choices().size(), 1);
    QCOMPARE(m_document->getCommonBackReason(), earlier);
    QCOMPARE(m_document->getCommonBackReason().isNull(), earlier.isNull());
    QVERIFY(reasonOf(m_position).isNull());
}

void TestBackReasons::commonChoiceReplacesEarlierReason()
{
    setReasons(TwoReasons);
    m_document->setCommonBackReason(5);
    m_host->dialog()->enqueueChoice(0);
    const control::Action action(control::SelectBackReason, {{QStringLiteral("target"), QStringLiteral("document")}});
    QCOMPARE(m_plugin->selectBackReason(action), EContext::Continue);
    QCOMPARE(m_document->getCommonBackReason(), QVariant(3));
}

void TestBackReasons::targetIsCaseSensitive()
{
    setReasons(TwoReasons);
    m_host->dialog()->enqueueChoice(0);
    const control::Action action = choiceFor(m_position);
    action.insert(QStringLiteral("target"), QStringLiteral("Document"));
    QCOMPARE(m_plugin->selectBackReason(action), EContext::Continue);
    QCOMPARE(reasonOf(m_position), QVariant(3));
    QVERIFY(m_document->getCommonBackReason().isNull());
    QCOMPARE(m_host->dialog()->choices().first().title.id(), QStringLiteral("tessaroPositionBackReason"));
}

void TestBackReasons::positionFoundByNumber_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("found");
    QTest::newRow("document list, position 1") << 1 << 1 << true;
    QTest::newRow("document list, no such position") << 1 << 9 << false;
    QTest::newRow("other kind") << 0 << 1 << false;
}

void TestBackReasons::positionFoundByNumber()
{
    QFETCH(int, kind);
    QFETCH(int, number);
    QFETCH(bool, found);
    setReasons({{4, QStringLiteral("Брак")}});
    const control::Action action(control::SelectBackReason,
                                 {{QStringLiteral("kind"), kind}, {QStringLiteral("positionNumber"), number}});
    QCOMPARE(m_plugin->selectBackReason(action), found ? EContext::Continue : EContext::Stop);
    QCOMPARE(reasonOf(m_position), found ? QVariant(4) : QVariant());
    if (found) {
        QVERIFY(m_host->dialog()->messages().isEmpty());
        return;
    }
    const auto shown = m_host->dialog()->messages();
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown.first().message, tr::Tr(QStringLiteral("selectedPositionIsNotAProduct"),
                                           QStringLiteral("Выбранная позиция не является товаром")));
    QCOMPARE(shown.first().kind, 1);
}

void TestBackReasons::tableKindComesFromDocument()
{
    Singleton<DictionariesDao>::instance()->setBackReasons(9, {{7, QStringLiteral("Пересорт")}});
    QCOMPARE(m_plugin->selectBackReason(choiceFor(m_position)), EContext::Continue);
    QVERIFY(reasonOf(m_position).isNull());
    m_document->setBackReasonDictionaryKind(9);
    QCOMPARE(m_plugin->selectBackReason(choiceFor(m_position)), EContext::Continue);
    QCOMPARE(reasonOf(m_position), QVariant(7));
}

void TestBackReasons::checkBackReasons_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("shown");
    QTest::newRow("table 2 empty") << 0 << true;
    QTest::newRow("only another table filled") << 9 << true;
    QTest::newRow("table 2 filled") << 2 << false;
}

void TestBackReasons::checkBackReasons()
{
    QFETCH(int, kind);
    QFETCH(bool, shown);
    if (kind)
        Singleton<DictionariesDao>::instance()->setBackReasons(kind, {{1, QStringLiteral("Брак")}});
    m_plugin->checkBackReasons();
    const auto messages = m_host->dialog()->messages();
    QCOMPARE(messages.size(), shown ? 1 : 0);
    if (shown)
        QCOMPARE(messages.first().message, tr::Tr(QStringLiteral("tessaroBackReasonListIsEmpty"),
                                                  QStringLiteral("В таблице причин возврата нет записей")));
}

QTEST_GUILESS_MAIN(TestBackReasons)
#include "tst_backreasons.moc"
