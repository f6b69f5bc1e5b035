// What the built plug-in takes from its host: every dynamic symbol the module
// leaves undefined that none of its other libraries (Qt, the C++ and C
// runtimes) defines. Each must be listed in hostsymbols.txt, the list that
// docs/host-interface.md explains, so that a new use of the host SDK is a
// deliberate change of the porting guide, never a surprise on a real till.

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

class TestHostSymbols : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void symbolTakenIffListed_data();
    void symbolTakenIffListed();

private:
    static QStringList run(const QString &program, const QStringList &arguments);
    static QSet<QString> dynamicSymbols(const QString &file, const QString &which);
    static QStringList otherLibraries(const QString &module);

    QSet<QString> m_imported;
    QSet<QString> m_listed;
};

QStringList TestHostSymbols::run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        qFatal("%s %s failed: %s", qPrintable(program), qPrintable(arguments.join(QLatin1Char(' '))),
               process.readAllStandardError().constData());
    return QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

// Demangled names without their symbol version ("@Qt_6"), which differs between builds of a library.
QSet<QString> TestHostSymbols::dynamicSymbols(const QString &file, const QString &which)
{
    static const QRegularExpression line(QStringLiteral("^\\s*[0-9a-f]*\\s+\\S\\s+(.+?)(@@?\\S+)?$"));
    QSet<QString> names;
    for (const QString &text : run(QStringLiteral("nm"), {QStringLiteral("-D"), QStringLiteral("-C"), which, file})) {
        const QRegularExpressionMatch match = line.match(text);
        if (match.hasMatch())
            names.insert(match.captured(1));
    }
    return names;
}

// The libraries the module loads, resolved as the loader does, except the host's.
QStringList TestHostSymbols::otherLibraries(const QString &module)
{
    static const QRegularExpression resolved(QStringLiteral("^\\s*(\\S+) => (/\\S+)"));
    const QString host = QFileInfo(QStringLiteral(TESSARO_HOST_LIBRARY)).fileName();
    QStringList libraries;
    for (const QString &text : run(QStringLiteral("ldd"), {module})) {
        const QRegularExpressionMatch match = resolved.match(text);
        if (match.hasMatch() && match.captured(1) != host)
            libraries.append(match.captured(2));
    }
    return libraries;
}

void TestHostSymbols::initTestCase()
{
    const QString module = QStringLiteral(TESSARO_PLUGIN_MODULE);
    QVERIFY2(QFile::exists(module), qPrintable(module));
    m_imported = dynamicSymbols(module, QStringLiteral("--undefined-only"));
    for (const QString &library : otherLibraries(module))
        m_imported.subtract(dynamicSymbols(library, QStringLiteral("--defined-only")));
    // Weak references the runtime resolves when present (transactional memory, gmon): no host's.
    static const QRegularExpression runtimeWeak(QStringLiteral("^(_ITM_|__gmon_start__|__cxa_finalize)"));
    m_imported.removeIf([](const QString &name) { return runtimeWeak.match(name).hasMatch(); });
    QVERIFY(!m_imported.isEmpty());

    // TESSARO_WRITE_HOST_SYMBOLS=FILE writes what the plug-in takes, sorted: the start of a new list.
    if (const QString out = qEnvironmentVariable("TESSARO_WRITE_HOST_SYMBOLS"); !out.isEmpty()) {
        QStringList imported = m_imported.values();
        imported.sort();
        QFile file(out);
        QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Text), qPrintable(out));
        file.write(imported.join(QLatin1Char('\n')).toUtf8() + '\n');
    }

    QFile list(QStringLiteral(TESSARO_HOST_SYMBOL_LIST));
    QVERIFY2(list.open(QIODevice::ReadOnly | QIODevice::Text), qPrintable(list.fileName()));
    while (!list.atEnd()) {
        const QString entry = QString::fromUtf8(list.readLine()).trimmed();
        if (!entry.isEmpty() && !entry.startsWith(QLatin1Char('#')))
            m_listed.insert(entry);
    }
}

// One row for each symbol the module takes or the list names.
void TestHostSymbols::symbolTakenIffListed_data()
{
    QTest::addColumn<QString>("symbol");
    QStringList symbols = (m_imported + m_listed).values();
    symbols.sort();
    for (const QString &symbol : symbols)
        QTest::newRow(qPrintable(symbol)) << symbol;
}

// A stale entry would tell a porter to map an operation the plug-in no longer
// calls. The list is that of the optimised build that ships: an unoptimised
// one calls through the vtable what the optimiser calls by name, so there it
// need only hold every symbol taken.
void TestHostSymbols::symbolTakenIffListed()
{
    QFETCH(QString, symbol);
    QVERIFY2(m_listed.contains(symbol),
             qPrintable(QStringLiteral("the plug-in takes '%1' from the host, but hostsymbols.txt does not list it").arg(symbol)));
    if (!TESSARO_SHIPPED_BUILD)
        return;
    QVERIFY2(m_imported.contains(symbol),
             qPrintable(QStringLiteral("hostsymbols.txt lists '%1', which the plug-in no longer takes from the host").arg(symbol)));
}

QTEST_GUILESS_MAIN(TestHostSymbols)
#include "tst_hostsymbols.moc"
