#include "tilldatafolder.h"

#include <config.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace till;

class TestTillDataFolder : public QObject
{
    Q_OBJECT

private slots:
    void createsADefaultTill();
    void refusesASecondTill();
    void readsTheTillsSettings();
    void namesWhatIsMissing();
    void reportsABrokenDictionary();
    void reportsAHostileDictionaryOnOneLine();
    void hostConfigurationTakesScenarioSettings();
    void filesWithSecretsAreTheOwnersAlone();
};

void TestTillDataFolder::createsADefaultTill()
{
    QTemporaryDir dir;
    const TillDataFolder folder(dir.filePath(QStringLiteral("till")));
    QVERIFY(!folder.exists());
    QString error;
    QVERIFY2(folder.create(QStringLiteral("http://127.0.0.1:4000/"), QString(), &error), qPrintable(error));
    QVERIFY(folder.exists());
    QVERIFY(QFile::exists(folder.dictionariesFile()));
    QVERIFY(QFileInfo(folder.documentsDir()).isDir());
    QCOMPARE(folder.serviceUrl(), QStringLiteral("http://127.0.0.1:4000"));
    QCOMPARE(folder.databaseFile(), dir.filePath(QStringLiteral("till/till.db")));
    const TillDataFolder other(dir.filePath(QStringLiteral("other")));
    QVERIFY(other.create(QStringLiteral("http://127.0.0.1:4000/api"), QStringLiteral("http://127.0.0.1:4000/token"), &error));
    QCOMPARE(Config(other.configFile()).getString(QStringLiteral("Tessaro:tokenUrl")), QStringLiteral("http://127.0.0.1:4000/token"));
}

void TestTillDataFolder::refusesASecondTill()
{
    QTemporaryDir dir;
    const TillDataFolder folder(dir.path());
    QString error;
    QVERIFY(folder.create(QStringLiteral("http://a"), QString(), &error));
    QVERIFY(!folder.create(QStringLiteral("http://b"), QString(), &error));
    QCOMPARE(error, QStringLiteral("%1 already holds a till").arg(folder.path()));
    QCOMPARE(folder.serviceUrl(), QStringLiteral("http://a"));
}

void TestTillDataFolder::readsTheTillsSettings()
{
    QTemporaryDir dir;
    const TillDataFolder folder(dir.path());
    QString error;
    QVERIFY(folder.create(QStringLiteral("http://a"), QString(), &error));
    const auto settings = folder.readSettings(&error);
    QVERIFY2(settings, qPrintable(error));
    QCOMPARE(settings->store, QStringLiteral("7"));
    QCOMPARE(settings->till, QStringLiteral("12"));
    QCOMPARE(settings->cashierId, 5);
    QCOMPARE(settings->cashierName, QStringLiteral("Иванова А. А."));
    QCOMPARE(settings->fiscalRegistrationNumber, Q_INT64_C(1234567890123456));
    QCOMPARE(settings->backReasons->size(), 3);
    QCOMPARE(settings->backReasons->first().name, QStringLiteral("Брак"));
    QCOMPARE(settings->currencies->size(), 3);
}

void TestTillDataFolder::namesWhatIsMissing()
{
    QTemporaryDir dir;
    const TillDataFolder folder(dir.path());
    QString error;
    QVERIFY(!folder.readSettings(&error));
    QCOMPARE(error, QStringLiteral("%1 holds no till (no till.ini); create one with: tessaro-till init --data %1").arg(folder.path()));
}

void TestTillDataFolder::reportsABrokenDictionary()
{
    QTemporaryDir dir;
    const TillDataFolder folder(dir.path());
    QString error;
    QVERIFY(folder.create(QStringLiteral("http://a"), QString(), &error));
    QFile file(folder.dictionariesFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"backReasons": [{"code": 1}]})");
    file.close();
    QVERIFY(!folder.readSettings(&error));
    QCOMPARE(error, QStringLiteral("%1: backReasons[0]: missing key \"name\"").arg(folder.dictionariesFile()));
}

// Every command prints this error to a terminal: a key of the file cannot add
// a line of its own or colour the terminal.
void TestTillDataFolder::reportsAHostileDictionaryOnOneLine()
{
    QTemporaryDir dir;
    const TillDataFolder folder(dir.path());
    QString error;
    QVERIFY(folder.create(QStringLiteral("http://a"), QString(), &error));
    QFile file(folder.dictionariesFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"currencies": [{"code": 1, "name": "x", "\u001b[31mEVIL\r\nX-Forged: 1": 2}]})");
    file.close();
    QVERIFY(!folder.readSettings(&error));
    QCOMPARE(error, QStringLiteral("%1: currencies[0].\\x1b[31mEVIL\\r\\nX-Forged: 1: unknown key (expected one of: code, name, type)")
                        .arg(folder.dictionariesFile()));
}

void TestTillDataFolder::hostConfigurationTakesScenarioSettings()
{
    QTemporaryDir dir;
    const TillDataFolder folder(dir.path());
    QString error;
    QVERIFY(folder.create(QStringLiteral("http://a"), QString(), &error));
    const QString file = folder.writeHostConfig({{QStringLiteral("Tessaro:url"), QStringLiteral("http://b")},
                                                 {QStringLiteral("Tessaro.ForbiddenMixedValuts:1,4"), QStringLiteral("2")}},
                                                &error);
    QVERIFY2(!file.isEmpty(), qPrintable(error));
    const Config config(file);
    QCOMPARE(config.getString(QStringLiteral("Tessaro:url")), QStringLiteral("http://b"));
    QCOMPARE(config.getString(QStringLiteral("Host:database")), folder.databaseFile());
    QCOMPARE(config.getString(QStringLiteral("Host:documentsDir")), folder.documentsDir());
    QCOMPARE(config.getString(QStringLiteral("Tessaro:clientId")), QStringLiteral("till"));
    QCOMPARE(config.getString(QStringLiteral("Tessaro:tokenUrl")), QStringLiteral("http://a/token"));
    QCOMPARE(config.keys(QStringLiteral("Tessaro.ForbiddenMixedValuts")), (QStringList{QStringLiteral("1,4"), QStringLiteral("3")}));
    QCOMPARE(config.getIntList(QStringLiteral("Tessaro.ForbiddenMixedValuts:1,4")), QList<int>{2});
    // The till's own file stays as it was.
    QCOMPARE(folder.serviceUrl(), QStringLiteral("http://a"));
}

void TestTillDataFolder::filesWithSecretsAreTheOwnersAlone()
{
    // The usual mask, which leaves new files readable by everyone.
    const mode_t previous = ::umask(022);
    QTemporaryDir dir;
    const TillDataFolder folder(dir.path());
    QString error;
    QVERIFY(folder.create(QStringLiteral("http://a"), QString(), &error));
    const QString hostConfig = folder.writeHostConfig({{QStringLiteral("Tessaro:authorizationHeader"), QStringLiteral("Basic c2VjcmV0")}}, &error);
    ::umask(previous);

    const QFileDevice::Permissions others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup
                                            | QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
    for (const QString &file : {folder.configFile(), hostConfig}) {
        const QFileDevice::Permissions permissions = QFileInfo(file).permissions();
        QVERIFY2((permissions & others) == 0, qPrintable(file));
        QVERIFY(permissions.testFlags(QFileDevice::ReadOwner | QFileDevice::WriteOwner));
    }
    QCOMPARE(Config(hostConfig).getString(QStringLiteral("Tessaro:authorizationHeader")), QStringLiteral("Basic c2VjcmV0"));
}

QTEST_GUILESS_MAIN(TestTillDataFolder)
#include "tst_tilldatafolder.moc"
