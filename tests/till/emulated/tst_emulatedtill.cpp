#include "emulatedtill.h"
#include "emulatedtillconstants.h"

#include <QSettings>
#include <QTest>

using namespace till;

/// The emulated till that the demo, the simulation and the till's tests
/// share: the named constants are those of a new data folder, and the till
/// talks to the emulator it started.
class TestEmulatedTill : public QObject
{
    Q_OBJECT

private slots:
    void constantsAreThoseOfANewTill();
    void currencyTables_data();
    void currencyTables();
    void secondTillOnTheSameService();
};

void TestEmulatedTill::constantsAreThoseOfANewTill()
{
    EmulatedTill emulated;
    QString error;
    QVERIFY2(emulated.start(&error), qPrintable(error));
    const std::optional<TillSettings> settings = emulated.folder().readSettings(&error);
    QVERIFY2(settings, qPrintable(error));
    QCOMPARE(settings->store, QString::number(emulated::storeNo));
    QCOMPARE(settings->till, QString::number(emulated::tillNo));
    const QSettings ini(emulated.folder().configFile(), QSettings::IniFormat);
    QCOMPARE(ini.value(QStringLiteral("Tessaro/authorizationHeader")).toString(), QStringLiteral("Basic ") + emulated::clientCredentials);
    QCOMPARE(emulated.folder().serviceUrl(), emulated.emulator().baseUrl().toString());
    QCOMPARE(ini.value(QStringLiteral("Tessaro/tokenUrl")).toString(), emulated.emulator().tokenUrl().toString());
    QCOMPARE(EmulatedTill::secrets(), (QStringList{emulated::clientCredentials, emulated::appSecret}));
}

void TestEmulatedTill::currencyTables_data()
{
    QTest::addColumn<EmulatedTill::CurrencyTables>("tables");
    QTest::addColumn<bool>("kept");
    QTest::newRow("kept") << EmulatedTill::CurrencyTables::Kept << true;
    QTest::newRow("removed") << EmulatedTill::CurrencyTables::Removed << false;
}

void TestEmulatedTill::currencyTables()
{
    QFETCH(EmulatedTill::CurrencyTables, tables);
    QFETCH(bool, kept);
    EmulatedTill emulated;
    QString error;
    QVERIFY2(emulated.start(&error, tables), qPrintable(error));
    QSettings ini(emulated.folder().configFile(), QSettings::IniFormat);
    ini.beginGroup(QStringLiteral("Tessaro.ForbiddenMixedValuts"));
    QCOMPARE(!ini.childKeys().isEmpty(), kept);
    ini.endGroup();
    ini.beginGroup(QStringLiteral("TessaroBack.AdditionalBackBySaleValuts"));
    QCOMPARE(!ini.childKeys().isEmpty(), kept);
}

void TestEmulatedTill::secondTillOnTheSameService()
{
    tessaro::emulator::EmulatorSettings settings;
    settings.tills << EmulatedTill::serviceTill(false);
    EmulatedTill emulated(settings);
    const QString named = emulated.filePath(QStringLiteral("named"));
    QString error;
    QVERIFY2(emulated.start(named, &error), qPrintable(error));
    QCOMPARE(emulated.folder().path(), named);
    QVERIFY(emulated.folder().exists());
    const TillDataFolder second(emulated.filePath(QStringLiteral("second")));
    QVERIFY2(emulated.createTill(second, &error), qPrintable(error));
    QCOMPARE(second.serviceUrl(), emulated.emulator().baseUrl().toString());
    QCOMPARE(emulated.emulator().settings().tills.size(), 1);
    QCOMPARE(emulated.emulator().settings().tills.first().storeNo, emulated::storeNo);
    QCOMPARE(emulated.emulator().settings().tills.first().tillNo, emulated::tillNo);
    QVERIFY(!emulated.emulator().settings().tills.first().shiftOpen);
}

QTEST_GUILESS_MAIN(TestEmulatedTill)
#include "tst_emulatedtill.moc"
