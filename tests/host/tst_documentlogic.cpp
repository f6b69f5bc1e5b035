#include <backdocument.h>
#include <dictionariesdao.h>
#include <documentlogic.h>
#include <singleton.h>
#include <testing/testhost.h>

#include <QTest>

class TestDocumentLogic : public QObject
{
    Q_OBJECT

private slots:
    void keepsReasonAlreadyChosen();
    void takesTheOnlyReasonWithoutAsking();
    void asksTheCashierAmongSeveral();
    void cancelLeavesNoReason();
    void noReasonsNoChoice();
};

namespace {
void setReasons(const QList<DictionariesDao::BackReason> &reasons)
{
    Singleton<DictionariesDao>::instance()->setBackReasons(2, reasons);
}
} // namespace

void TestDocumentLogic::keepsReasonAlreadyChosen()
{
    TestHost host;
    auto document = QSharedPointer<BackDocument>::create();
    document->setCommonBackReason(4);
    QVERIFY(DocumentLogic().chooseCommonBackReason(document, {}));
    QVERIFY(host.dialog()->choices().isEmpty());
}

void TestDocumentLogic::takesTheOnlyReasonWithoutAsking()
{
    TestHost host;
    setReasons({{3, QStringLiteral("Брак")}});
    auto document = QSharedPointer<BackDocument>::create();
    QVERIFY(DocumentLogic().chooseCommonBackReason(document, {}));
    QCOMPARE(document->getCommonBackReason().toInt(), 3);
    QVERIFY(host.dialog()->choices().isEmpty());
}

void TestDocumentLogic::asksTheCashierAmongSeveral()
{
    TestHost host;
    setReasons({{3, QStringLiteral("Брак")}, {5, QStringLiteral("Не подошёл размер")}});
    host.dialog()->enqueueChoice(1);
    auto document = QSharedPointer<BackDocument>::create();
    QVERIFY(DocumentLogic().chooseCommonBackReason(document, {}));
    QCOMPARE(document->getCommonBackReason().toInt(), 5);
    QCOMPARE(host.dialog()->choices().first().items.size(), 2);
}

void TestDocumentLogic::cancelLeavesNoReason()
{
    TestHost host;
    setReasons({{3, QStringLiteral("Брак")}, {5, QStringLiteral("Не подошёл размер")}});
    auto document = QSharedPointer<BackDocument>::create();
    QVERIFY(!DocumentLogic().chooseCommonBackReason(document, {}));
    QVERIFY(document->getCommonBackReason().isNull());
}

void TestDocumentLogic::noReasonsNoChoice()
{
    TestHost host;
    QVERIFY(!DocumentLogic().chooseCommonBackReason(QSharedPointer<BackDocument>::create(), {}));
}

QTEST_GUILESS_MAIN(TestDocumentLogic)
#include "tst_documentlogic.moc"
