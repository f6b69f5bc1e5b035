// The two currency lists read from the configuration by init().

#include "plugintesthost.h"
#include "testableplugin.h"

#include <QTest>

using Valuts = QMap<int, QSet<int>>;

class TestCurrencyLists : public QObject
{
    Q_OBJECT

private slots:
    void lists_data();
    void lists();
    void secondInitAddsTheSamePairs();
    void entriesAccumulateOverInits();
};

// Each row's lines go into both sections: the forbidden list relates both
// ways, the additional list only from key to value.
void TestCurrencyLists::lists_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<Valuts>("forbidden");
    QTest::addColumn<Valuts>("additional");
    QTest::newRow("two codes in a key") << QStringLiteral("1,4=2\n")
                                        << Valuts{{1, {2}}, {4, {2}}, {2, {1, 4}}}
                                        << Valuts{{1, {2}}, {4, {2}}};
    QTest::newRow("keys naming one code unite") << QStringLiteral("1=2\n1,5=3\n")
                                                << Valuts{{1, {2, 3}}, {5, {3}}, {2, {1}}, {3, {1, 5}}}
                                                << Valuts{{1, {2, 3}}, {5, {3}}};
    QTest::newRow("value of two codes") << QStringLiteral("1=2,3\n")
                                        << Valuts{{1, {2, 3}}, {2, {1}}, {3, {1}}}
                                        << Valuts{{1, {2, 3}}};
    QTest::newRow("key without value") << QStringLiteral("6=\n")
                                       << Valuts{{6, {}}}
                                       << Valuts{{6, {}}};
    QTest::newRow("pieces that are not codes") << QStringLiteral("x,7=8,y\n")
                                               << Valuts{{7, {8}}, {8, {7}}}
                                               << Valuts{{7, {8}}};
    QTest::newRow("no section") << QString() << Valuts() << Valuts();
}

void TestCurrencyLists::lists()
{
    QFETCH(QString, lines);
    QFETCH(Valuts, forbidden);
    QFETCH(Valuts, additional);
    const QString ini = lines.isEmpty() ? QString()
                                        : QStringLiteral("[Tessaro.ForbiddenMixedValuts]\n%1[TessaroBack.AdditionalBackBySaleValuts]\n%1").arg(lines);
    PluginTestHost host(ini);
    TestablePlugin plugin;
    plugin.init();
    QCOMPARE(plugin.forbiddenMixedValuts, forbidden);
    QCOMPARE(plugin.additionalBackBySaleValuts, additional);
}

void TestCurrencyLists::secondInitAddsTheSamePairs()
{
    PluginTestHost host(QStringLiteral("[Tessaro.ForbiddenMixedValuts]\n1,4=2\n[TessaroBack.AdditionalBackBySaleValuts]\n1=3\n"));
    TestablePlugin plugin;
    plugin.init();
    const Valuts forbidden = plugin.forbiddenMixedValuts;
    const Valuts additional = plugin.additionalBackBySaleValuts;
    plugin.init();
    QCOMPARE(plugin.forbiddenMixedValuts, forbidden);
    QCOMPARE(plugin.additionalBackBySaleValuts, additional);
}

void TestCurrencyLists::entriesAccumulateOverInits()
{
    PluginTestHost host(QStringLiteral("[Tessaro.ForbiddenMixedValuts]\n1=2\n"));
    TestablePlugin plugin;
    plugin.init();
    host.setConfig(QStringLiteral("[Tessaro.ForbiddenMixedValuts]\n1=3\n"));
    plugin.init();
    QCOMPARE(plugin.forbiddenMixedValuts, (Valuts{{1, {2, 3}}, {2, {1}}, {3, {1}}}));
}

QTEST_GUILESS_MAIN(TestCurrencyLists)
#include "tst_currencylists.moc"
