// The built plug-in module as the host sees it: loaded through QPluginLoader,
// reached only through the host's own interfaces.

#include "hooktable.h"

#include <plugin/selfcheck/selfcheckprotocol.h>
#include <support/logcapture.h>
#include <tessaroversion.h>

#include <abstractdocument.h>
#include <basicloyaltysystem.h>
#include <control/eactiontype.h>
#include <edocumenttype.h>
#include <mockfactory.h>
#include <savetofilelogic.h>
#include <testing/testhost.h>

#include <QCborMap>
#include <QCborValue>
#include <QDir>
#include <QFile>
#include <QLibrary>
#include <QPluginLoader>
#include <QPointer>
#include <QTest>

#include <functional>
#include <new>
#include <stdexcept>

namespace {

using Throw = std::function<void()>;

// Saving the document fails with an exception of the C++ library.
class ThrowingSaveToFileLogic : public SaveToFileLogic
{
public:
    explicit ThrowingSaveToFileLogic(Throw fail)
        : m_fail(std::move(fail))
    {
    }
    bool save(const QSharedPointer<AbstractDocument> &, const QStringList &) override
    {
        m_fail();
        return false;
    }

private:
    Throw m_fail;
};

} // namespace

Q_DECLARE_METATYPE(Throw)

class TestPluginEntry : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void metadataNamesInterfaceAndClass();
    void metadataHoldsNothingElse();
    void libraryCarriesItsVersion();
    void initLogsTheVersionOnce();
    void instanceIsOneObject();
    void freshInstanceAfterDestruction();
    void metacast_data();
    void metacast();
    void metacastOfNullName();
    void libraryExportsTheCheckEntry();
    void registrationsFollowTheHookTable_data();
    void registrationsFollowTheHookTable();
    void handlerChoosesBackReasons();
    void returnHooksOffForSaleDocument_data();
    void returnHooksOffForSaleDocument();
    void formsInResources();
    void otherExceptionInHookIsShownAndRefuses_data();
    void otherExceptionInHookIsShownAndRefuses();

private:
    QObject *instance();
    BasicPlugin *initialisedPlugin();

    QPluginLoader m_loader;
    QLibrary m_library;
    QPointer<QObject> m_instance;
    std::unique_ptr<TestHost> m_host;
};

void TestPluginEntry::initTestCase()
{
    const QString file = QDir(qEnvironmentVariable("TESSARO_PLUGIN_DIR")).filePath(QStringLiteral("libtessaroback.so"));
    QVERIFY2(QFile::exists(file), qPrintable(file));
    m_loader.setFileName(file);
    QVERIFY2(m_loader.load(), qPrintable(m_loader.errorString()));
    m_library.setFileName(file);
    QVERIFY2(m_library.load(), qPrintable(m_library.errorString()));
}

// Every test starts from a fresh plug-in object and a fresh host.
void TestPluginEntry::cleanup()
{
    delete m_instance;
    m_host.reset();
}

QObject *TestPluginEntry::instance()
{
    m_instance = m_loader.instance();
    return m_instance;
}

BasicPlugin *TestPluginEntry::initialisedPlugin()
{
    m_host = std::make_unique<TestHost>();
    auto *plugin = qobject_cast<BasicPlugin *>(instance());
    if (plugin)
        plugin->init();
    return plugin;
}

void TestPluginEntry::metadataNamesInterfaceAndClass()
{
    const QJsonObject metaData = m_loader.metaData();
    QCOMPARE(metaData.value(QStringLiteral("IID")).toString(), QStringLiteral("TessaroBack"));
    QCOMPARE(metaData.value(QStringLiteral("className")).toString(), QStringLiteral("BackPlugin"));
}

void TestPluginEntry::metadataHoldsNothingElse()
{
    using Query = QPluginMetaData (*)();
    const auto query = reinterpret_cast<Query>(m_library.resolve("qt_plugin_query_metadata_v2"));
    QVERIFY(query);
    const QPluginMetaData raw = query();
    // A header of four bytes (format version, Qt major and minor, architecture), then CBOR.
    const auto *bytes = static_cast<const char *>(raw.data);
    const QPluginMetaData::Header header = *reinterpret_cast<const QPluginMetaData::Header *>(bytes);
    QCOMPARE(header.qt_major_version, quint8(QT_VERSION_MAJOR));
    const qsizetype headerSize = sizeof(QPluginMetaData::Header);
    const QCborValue cbor = QCborValue::fromCbor(QByteArray(bytes + headerSize, qsizetype(raw.size) - headerSize));
    QCborMap expected;
    expected.insert(2, QStringLiteral("TessaroBack"));
    expected.insert(3, QStringLiteral("BackPlugin"));
    QCOMPARE(cbor.toMap(), expected);
}

// The version as a what-string in the library file, found without loading it.
void TestPluginEntry::libraryCarriesItsVersion()
{
    QFile file(m_library.fileName());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains(QByteArrayLiteral("@(#)TessaroBack " TESSARO_VERSION "\0")));
}

void TestPluginEntry::initLogsTheVersionOnce()
{
    LogCapture log;
    QVERIFY(initialisedPlugin());
    const QStringList lines = log.texts(QStringLiteral("tessaroback"), QtInfoMsg);
    QCOMPARE(lines.count(QStringLiteral("TessaroBack " TESSARO_VERSION)), 1);
}

void TestPluginEntry::instanceIsOneObject()
{
    using Instance = QObject *(*)();
    const auto entry = reinterpret_cast<Instance>(m_library.resolve("qt_plugin_instance"));
    QVERIFY(entry);
    QObject *first = instance();
    QVERIFY(first);
    QCOMPARE(entry(), first);
    QCOMPARE(entry(), first);
    QCOMPARE(m_loader.instance(), first);
    QCOMPARE(first->metaObject()->className(), "tessaro::BackPlugin");
}

void TestPluginEntry::freshInstanceAfterDestruction()
{
    using Instance = QObject *(*)();
    const auto entry = reinterpret_cast<Instance>(m_library.resolve("qt_plugin_instance"));
    QPointer<QObject> first = entry();
    first->setObjectName(QStringLiteral("first"));
    delete first;
    QVERIFY(first.isNull());
    m_instance = entry();
    QVERIFY(m_instance);
    QVERIFY(m_instance->objectName().isEmpty());
    QCOMPARE(entry(), m_instance.data());
}

void TestPluginEntry::metacast_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("yields");
    QTest::newRow("own class") << QByteArray("tessaro::BackPlugin") << "object";
    QTest::newRow("loyalty-system base") << QByteArray("BasicLoyaltySystem") << "loyalty system";
    QTest::newRow("host's loyalty-system interface id") << QByteArray("norvik.BasicLoyaltySystem") << "nothing";
    QTest::newRow("plug-in interface") << QByteArray("norvik.AbstractPlugin") << "plug-in";
    QTest::newRow("QObject") << QByteArray("QObject") << "object";
    QTest::newRow("plug-in class name") << QByteArray("BasicPlugin") << "nothing";
    QTest::newRow("unknown") << QByteArray("tessaro::Interface") << "nothing";
}

void TestPluginEntry::metacast()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, yields);
    QObject *object = instance();
    const QHash<QString, void *> bases{
        {QStringLiteral("object"), object},
        {QStringLiteral("loyalty system"), dynamic_cast<BasicLoyaltySystem *>(object)},
        {QStringLiteral("plug-in"), dynamic_cast<BasicPlugin *>(object)},
        {QStringLiteral("nothing"), nullptr},
    };
    QCOMPARE(object->qt_metacast(name.constData()), bases.value(yields));
}

void TestPluginEntry::metacastOfNullName()
{
    QObject *object = instance();
    QCOMPARE(object->qt_metacast(nullptr), nullptr);
    // The plug-in interface is a virtual base: reaching it moves the pointer.
    QVERIFY(static_cast<void *>(qobject_cast<BasicPlugin *>(object)) != static_cast<void *>(object));
}

void TestPluginEntry::libraryExportsTheCheckEntry()
{
    // The till finds the plug-in's installation check by this name alone.
    QVERIFY(m_library.resolve(tessaro::selfcheck::EntryPoint));
}

void TestPluginEntry::registrationsFollowTheHookTable_data()
{
    addHookTable();
}

void TestPluginEntry::registrationsFollowTheHookTable()
{
    QFETCH(int, row);
    QFETCH(int, context);
    QFETCH(int, actionType);
    QFETCH(int, order);
    QFETCH(int, priority);
    BasicPlugin *plugin = initialisedPlugin();
    QVERIFY(plugin);
    const auto triggers = plugin->triggers();
    QCOMPARE(triggers.size(), 9);
    const ActionTrigger &trigger = triggers.at(row - 1).trigger;
    QCOMPARE(int(trigger.context()), context);
    QCOMPARE(int(trigger.actionType()), actionType);
    QCOMPARE(int(trigger.order()), order);
    QCOMPARE(int(trigger.priority()), priority);
    QCOMPARE(int(trigger.result()), 0);
}

void TestPluginEntry::handlerChoosesBackReasons()
{
    BasicPlugin *plugin = initialisedPlugin();
    QVERIFY(plugin);
    const auto handlers = plugin->handlers();
    QCOMPARE(handlers.size(), 1);
    QCOMPARE(int(handlers.first().context()), 6);
    QCOMPARE(int(handlers.first().actionType()), 7);
    QVERIFY(handlers.first().replacesHost());
}

void TestPluginEntry::returnHooksOffForSaleDocument_data()
{
    addHookTable();
}

void TestPluginEntry::returnHooksOffForSaleDocument()
{
    QFETCH(int, row);
    QFETCH(bool, returnsOnly);
    BasicPlugin *plugin = initialisedPlugin();
    QVERIFY(plugin);
    auto *loyaltySystem = static_cast<BasicLoyaltySystem *>(m_instance->qt_metacast("BasicLoyaltySystem"));
    QVERIFY(loyaltySystem);
    const auto sale = QSharedPointer<AbstractDocument>::create(EDocumentType::Sale);
    loyaltySystem->setDocument(sale);
    QCOMPARE(plugin->isTriggerEnabled(plugin->triggers().at(row - 1).id), !returnsOnly);
}

void TestPluginEntry::formsInResources()
{
    QVERIFY(QFile::exists(QStringLiteral(":/qt/qml/Tessaro/Returns/InputInvoiceInfo.qml")));
    QVERIFY(QFile::exists(QStringLiteral(":/qt/qml/Tessaro/Returns/qmldir")));
}

void TestPluginEntry::otherExceptionInHookIsShownAndRefuses_data()
{
    QTest::addColumn<Throw>("fail");
    QTest::newRow("out of memory") << Throw([] { throw std::bad_alloc(); });
    QTest::newRow("runtime error") << Throw([] { throw std::runtime_error("disk driver failed"); });
    // The exception's text goes into the log escaped: it cannot add a line of its own.
    QTest::newRow("text with a line break") << Throw([] { throw std::runtime_error("disk driver failed\nforged line"); });
}

// The close of a document whose answer is kept, so that no request goes out;
// saving it throws.
void TestPluginEntry::otherExceptionInHookIsShownAndRefuses()
{
    QFETCH(Throw, fail);
    BasicPlugin *plugin = initialisedPlugin();
    QVERIFY(plugin);
    auto *loyaltySystem = static_cast<BasicLoyaltySystem *>(m_instance->qt_metacast("BasicLoyaltySystem"));
    const auto sale = QSharedPointer<AbstractDocument>::create(EDocumentType::Sale);
    loyaltySystem->setDocument(sale);
    sale->setPluginData(loyaltySystem->getSystemType(), QStringLiteral("adviceNoteResponse"),
                        QVariantMap{{QStringLiteral("response"), QVariantMap{{QStringLiteral("Key4"), QStringLiteral("1")}}}});
    MockFactory<SaveToFileLogic>::setInstance(QSharedPointer<ThrowingSaveToFileLogic>::create(fail));
    const ActionTrigger &close = plugin->triggers().at(3).trigger;
    QCOMPARE(int(close.actionType()), int(control::AttemptToDocumentClose));

    LogCapture log;
    EContext::Result result = EContext::Continue;
    try {
        result = close(control::Action(control::AttemptToDocumentClose, {}));
    } catch (const std::exception &e) {
        QFAIL(qPrintable(QStringLiteral("the exception reached the host: ") + QString::fromLocal8Bit(e.what())));
    }

    QCOMPARE(result, EContext::Stop);
    const QStringList errors = log.texts(QStringLiteral("tessaroback"), QtCriticalMsg);
    QCOMPARE(errors.size(), 1);
    QVERIFY2(errors.first().startsWith(QStringLiteral("Сбой при обработке действия кассы: ")), qPrintable(errors.first()));
    QVERIFY2(!errors.first().contains(QLatin1Char('\n')), qPrintable(errors.first()));
    const QList<ScriptedDialog::Message> messages = m_host->dialog()->messages();
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().message.id(), QStringLiteral("tessaroUnexpectedError"));
    QCOMPARE(messages.first().message.text(),
             QStringLiteral("Внутренняя ошибка модуля Tessaro. Действие не выполнено, повторите его; "
                            "при повторе ошибки обратитесь в поддержку"));
}

QTEST_GUILESS_MAIN(TestPluginEntry)
#include "tst_pluginentry.moc"
