// The two currency lists read from the configuration by init().

#include "plugintesthost.h"
#include "testableplugin.h"

#include <QTest>

using Valuts = QMap<int, QSet<int>>;

namespace {

// The same lines in both sections.
QString bothSections(const QString &lines)
{
    return lines.isEmpty() ? QString()
                           : QStringLiteral("[Tessaro.ForbiddenMixedValuts]\n%1[TessaroBack.AdditionalBackBySaleValuts]\n%1").arg(lines);
}

} // namespace

class TestCurrencyLists : public QObject
{
    Q_OBJECT

private slots:
    void lists_data();
    void lists();
    void repeatedInit_data();
    void repeatedInit();
};

// The forbidden list relates both ways, the additional list only from key to value.
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
    PluginTestHost host(bothSections(lines));
    TestablePlugin plugin;
    plugin.init();
    QCOMPARE(plugin.forbiddenMixedValuts, forbidden);
    QCOMPARE(plugin.additionalBackBySaleValuts, additional);
}

// Neither list is cleared by a later init(): its entries accumulate.
void TestCurrencyLists::repeatedInit_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<Valuts>("forbidden");
    QTest::addColumn<Valuts>("additional");
    QTest::newRow("same configuration: sets unchanged") << QStringLiteral("1,4=2\n") << QStringLiteral("1,4=2\n")
                                                        << Valuts{{1, {2}}, {4, {2}}, {2, {1, 4}}}
                                                        << Valuts{{1, {2}}, {4, {2}}};
    QTest::newRow("changed configuration: pairs added") << QStringLiteral("1=2\n") << QStringLiteral("1=3\n7=8\n")
                                                        << Valuts{{1, {2, 3}}, {2, {1}}, {3, {1}}, {7, {8}}, {8, {7}}}
                                                        << Valuts{{1, {2, 3}}, {7, {8}}};
}

void TestCurrencyLists::repeatedInit()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(Valuts, forbidden);
    QFETCH(Valuts, additional);
    PluginTestHost host(bothSections(first));
    TestablePlugin plugin;
    plugin.init();
    host.setConfig(bothSections(second));
    plugin.init();
    QCOMPARE(plugin.forbiddenMixedValuts, forbidden);
    QCOMPARE(plugin.additionalBackBySaleValuts, additional);
}

QTEST_GUILESS_MAIN(TestCurrencyLists)
#include "tst_currencylists.moc"
