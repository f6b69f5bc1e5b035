// Opening the till at the service, against a scripted Tessaro service on the loopback interface.

#include "testableplugin.h"

#include "client/interface.h"
#include "tests/client/servicetestbed.h"

#include <support/filesizelimit.h>

#include <documentfacade.h>
#include <documentsdao.h>
#include <session.h>
#include <shiftopenexception.h>
#include <singleton.h>

#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>

using Answer = ScriptedHttpServer::Answer;

namespace {

// The shift records of the current shift, by name.
QMap<QString, QString> shiftRecords()
{
    QMap<QString, QString> records;
    const auto items = Singleton<DocumentsDao>::instance()->getStorageItems(Singleton<Session>::instance()->getCurrentShift());
    for (const StorageItem &item : items)
        records.insert(item.getName(), item.getValue());
    return records;
}

} // namespace

class TestShiftOpen : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void answerIsKeptAsShiftRecord_data();
    void answerIsKeptAsShiftRecord();
    void hostRefusalStopsBeforeService();
    void failedShiftRecordIsAnError();
    void serviceErrorPassesToCaller_data();
    void serviceErrorPassesToCaller();

private:
    std::unique_ptr<ServiceTestBed> m_bed;
    std::unique_ptr<TestablePlugin> m_plugin;
};

void TestShiftOpen::init()
{
    m_bed = std::make_unique<ServiceTestBed>();
    Singleton<Session>::instance()->setCurrentShift(4);
    m_plugin = std::make_unique<TestablePlugin>();
    m_plugin->init();
    m_plugin->interface->setToken(QStringLiteral("tok-0"));
}

void TestShiftOpen::cleanup()
{
    m_plugin.reset();
    m_bed.reset();
}

// "The shift is already opened" counts as success, and is kept all the same.
void TestShiftOpen::answerIsKeptAsShiftRecord_data()
{
    QTest::addColumn<int>("httpStatus");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("opened") << 200 << QByteArray(R"({"status":"OK","tillId":"012","shiftNumber":4})");
    QTest::newRow("already opened") << 400 << QByteArray(R"({"status":"The shift is already opened"})");
}

void TestShiftOpen::answerIsKeptAsShiftRecord()
{
    QFETCH(int, httpStatus);
    QFETCH(QByteArray, body);
    m_bed->server().enqueue(Answer::json(httpStatus, body));
    QTest::ignoreMessage(QtInfoMsg, "Открытие смены");
    m_plugin->shiftOpen();

    QCOMPARE(m_bed->server().requestCount(), 1);
    QCOMPARE(m_bed->server().requests().first().path, QStringLiteral("/api/till/open"));
    const QString stored = shiftRecords().value(QStringLiteral("tillOpen"));
    QCOMPARE(QJsonDocument::fromJson(stored.toUtf8()).object(), QJsonDocument::fromJson(body).object());
    QCOMPARE(stored, QString::fromUtf8(QJsonDocument::fromJson(body).toJson(QJsonDocument::Indented)));
}

void TestShiftOpen::hostRefusalStopsBeforeService()
{
    const tr::Tr refusal(QStringLiteral("fiscalRegistrarNotReady"), QStringLiteral("Фискальный регистратор не готов"));
    Singleton<DocumentFacade>::instance()->setShiftOpenRefusal(refusal);
    bool thrown = false;
    try {
        m_plugin->shiftOpen();
    } catch (const ShiftOpenException &e) {
        thrown = true;
        QCOMPARE(e.tr(), refusal);
        QVERIFY(!e.isRecoverable());
    }
    QVERIFY(thrown);
    QCOMPARE(m_bed->server().requestCount(), 0);
    QVERIFY(shiftRecords().isEmpty());
}

void TestShiftOpen::failedShiftRecordIsAnError()
{
    Singleton<DocumentsDao>::setInstance(new DocumentsDao(m_bed->host().folder() + QStringLiteral("/till.db")));
    m_bed->server().enqueue(Answer::json(200, R"({"status":"OK","tillId":"012","shiftNumber":4})"));
    QTest::ignoreMessage(QtInfoMsg, "Открытие смены");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^documents store ")));
    QTest::ignoreMessage(QtCriticalMsg, "Не удалось сохранить запись смены tillOpen");
    {
        const FileSizeLimit full(1024);
        QVERIFY(full.isSet());
        // The till is open at the service all the same: nothing is thrown.
        m_plugin->shiftOpen();
    }
    QCOMPARE(m_bed->server().requestCount(), 1);
    QVERIFY(shiftRecords().isEmpty());
}

void TestShiftOpen::serviceErrorPassesToCaller_data()
{
    QTest::addColumn<int>("httpStatus");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("server error") << 500 << QByteArray(R"({"message":"Internal Server Error"})");
    QTest::newRow("shift closed") << 400 << QByteArray(R"({"status":"The shift is closed"})");
}

void TestShiftOpen::serviceErrorPassesToCaller()
{
    QFETCH(int, httpStatus);
    QFETCH(QByteArray, body);
    m_bed->server().enqueue(Answer::json(httpStatus, body));
    QVERIFY_THROWS_EXCEPTION(BasicException, m_plugin->shiftOpen());
    QCOMPARE(m_bed->server().requestCount(), 1);
    QVERIFY(shiftRecords().isEmpty());
}

QTEST_GUILESS_MAIN(TestShiftOpen)
#include "tst_shiftopen.moc"
