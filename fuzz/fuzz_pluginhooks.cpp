// The built plug-in, loaded through QPluginLoader as the till loads it, driven
// through the host's action pipeline with what the bytes make: the
// configuration, the document bound (its positions, payments, properties and
// the values kept on it), the actions and their arguments, the cashier's
// answers and the service's answers (an in-process stand-in of the REST
// client, so nothing goes over the network).
//
// Whatever the host hands it, the plug-in must not crash the till, must not
// let an exception reach the host from a hook, and must answer each action
// with 0, 2 or 3.
#include "fuzzeddialog.h"
#include "fuzzedinput.h"
#include "fuzzedservice.h"
#include "fuzzsupport.h"

#include "pluginhost.h"

#include <actionpipeline.h>
#include <actionqueuecontroller.h>
#include <backbysaledocument.h>
#include <basicloyaltysystem.h>
#include <basicplugin.h>
#include <config.h>
#include <contextmanager.h>
#include <control/action.h>
#include <control/args/core.h>
#include <dictionariesdao.h>
#include <documentcardrecord.h>
#include <edocumenttype.h>
#include <goodsitem.h>
#include <hostobjects.h>
#include <mockfactory.h>
#include <moneyitem.h>
#include <qml/qmlbasedgui.h>
#include <quantity.h>
#include <session.h>
#include <singleton.h>
#include <tmcunit.h>
#include <user.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

constexpr int LoyaltySystemType = 27;

QTemporaryDir *folder = nullptr;
till::PluginHost *plugin = nullptr;
ActionPipeline *pipeline = nullptr;
// The bytes of the input being run, for the host actions installed once.
FuzzedInput *currentInput = nullptr;

struct ActionKind
{
    control::EActionType type;
    EContext::Code context;
};

// Every action the plug-in hooks, in the context the host runs it in.
const std::array<ActionKind, 9> actionKinds{{
    {control::Input, EContext::Document},
    {control::AddCoupon, EContext::Document},
    {control::AddPosition, EContext::Document},
    {control::AttemptToDocumentClose, EContext::Document},
    {control::AttemptToBackBySale, EContext::Document},
    {control::AddPayment, EContext::Payment},
    {control::StornoAll, EContext::Document},
    {control::BackBySale, EContext::Document},
    {control::SelectBackReason, EContext::Document},
}};

// The host configuration as an INI file, as the till writes it. A file read
// is cheaper than settings set in memory, which QSettings writes out (and
// syncs to disk) when the host drops them.
void configure(FuzzedInput &input)
{
    QString ini;
    const auto section = [&ini](const QString &name) { ini += QLatin1Char('[') + name + QStringLiteral("]\n"); };
    const auto value = [&ini](const QString &key, const QString &text) { ini += key + QLatin1Char('=') + text + QLatin1Char('\n'); };
    const auto flag = [&input] { return input.flag() ? QStringLiteral("true") : QStringLiteral("false"); };
    section(QStringLiteral("Tessaro"));
    value(QStringLiteral("url"), QStringLiteral("http://127.0.0.1:9/api"));
    value(QStringLiteral("tokenUrl"), QStringLiteral("http://127.0.0.1:9/oauth/token"));
    value(QStringLiteral("useTokenAuth"), flag());
    value(QStringLiteral("timeout"), input.numberText());
    value(QStringLiteral("validationCouponMask"), input.text(8));
    value(QStringLiteral("operationIdAsCardNumber"), input.text(8));
    section(QStringLiteral("OrvelGate"));
    value(QStringLiteral("tessaro"), input.pick(4) == 0 ? QStringLiteral("true") : QStringLiteral("false"));
    value(QStringLiteral("appKey"), input.text(8));
    value(QStringLiteral("appSecret"), input.text(8));
    section(QStringLiteral("TessaroBack.PaymentRoundingAmount"));
    value(QStringLiteral("byChange"), flag());
    value(QStringLiteral("fiscalRound"), flag());
    const std::array<QString, 6> tables{
        QStringLiteral("Tessaro.ForbiddenMixedValuts"), QStringLiteral("TessaroBack.AdditionalBackBySaleValuts"),
        QStringLiteral("Tessaro.PaymentCodes"),         QStringLiteral("Tessaro.VatCodes"),
        QStringLiteral("Tessaro.EanReasons"),           QStringLiteral("Tessaro.DiscardPaymentFields"),
    };
    for (int entries = input.pick(5); entries > 0; --entries) {
        section(tables.at(size_t(input.pick(int(tables.size())))));
        value(input.flag() ? QString::number(input.integer()) : input.numberText(),
              QStringLiteral("%1,%2").arg(input.numberText(), input.numberText()));
    }

    // QSettings keeps what it read of a file until the file's size or time
    // changes: every input gets a time of its own.
    static qint64 serial = 0;
    const QString path = folder->filePath(QStringLiteral("config.ini"));
    QFile file(path);
    fuzzRequire(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the configuration file is written");
    file.write(ini.toUtf8());
    file.setFileTime(QDateTime::fromSecsSinceEpoch(++serial, Qt::UTC), QFileDevice::FileModificationTime);
    file.close();
    Singleton<Config>::setInstance(new Config(path));
}

void installHost(FuzzedInput &input)
{
    HostObjects::resetAll();
    configure(input);

    auto *session = new Session;
    session->getRegistry().setShopCode(input.flag() ? QStringLiteral("7") : input.text(6));
    session->getRegistry().setCashCode(QStringLiteral("12"));
    if (input.pick(4) != 0)
        session->setCurrentUser(QSharedPointer<User>::create(input.integer(), input.text(6), input.text(6)));
    Singleton<Session>::setInstance(session);

    auto *dictionaries = new DictionariesDao;
    for (int kind = 0; kind < 4; ++kind) {
        QList<DictionariesDao::BackReason> reasons;
        for (int count = input.pick(4); count > 0; --count)
            reasons << DictionariesDao::BackReason{input.integer(), input.text(8)};
        dictionaries->setBackReasons(kind, reasons);
    }
    Singleton<DictionariesDao>::setInstance(dictionaries);

    auto *gui = new qml::QmlBasedGui;
    // The invoice form: the answer may hold anything a form could send, or nothing.
    gui->setPresenter([&input](const qml::ViewDescriptor &view) {
        if (input.pick(5) == 0)
            return Event();
        QVariantMap data;
        const std::array<QString, 4> fields{QStringLiteral("cashCode"), QStringLiteral("invoiceNumber"),
                                            QStringLiteral("storeNumber"), QStringLiteral("invoiceDate")};
        for (const QString &field : fields) {
            if (input.pick(6) != 0)
                data.insert(field, input.flag() ? QVariant(input.digits(input.pick(8))) : input.value());
        }
        if (input.pick(4) == 0)
            data.insert(input.text(8), input.value());
        return Event(view.event.getCode(), {{QStringLiteral("data"), data}});
    });
    Singleton<qml::QmlBasedGui>::setInstance(gui);

    Singleton<ActionQueueController>::setInstance(new ActionQueueController);
    pipeline->installAsQueueRunner();
    MockFactory<Dialog>::setInstance(QSharedPointer<FuzzedDialog>::create(&input));
    MockFactory<RestClient>::setCreator([&input] { return QSharedPointer<RestClient>(new FuzzedService(&input)); });
}

QSharedPointer<GoodsItem> position(FuzzedInput &input)
{
    auto item = QSharedPointer<GoodsItem>::create();
    item->setPosnum(input.integer());
    item->setCode(input.flag() ? input.digits(input.pick(14)) : input.text(14));
    item->setBarcode(input.text(14));
    item->setBquant(input.number());
    item->setPrice(input.number());
    item->setSumb(input.number());
    item->setVatRate(input.number());
    item->setInputType(input.integer());
    item->setExciseMark(input.text(16));
    if (input.pick(4) != 0)
        item->setTmcUnit(QSharedPointer<TmcUnit>::create(input.flag()));
    if (input.flag())
        item->setAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"), input.value());
    if (input.flag()) {
        const std::array<QString, 4> keys{QStringLiteral("traceability"), QStringLiteral("exciseEan"),
                                          QStringLiteral("coupon"), QStringLiteral("positionData")};
        const QVariant value = input.flag() ? input.value()
                                            : QVariant(QVariantMap{{QStringLiteral("gtin"), input.value()},
                                                                   {QStringLiteral("sequenceNumber"), input.value()},
                                                                   {QStringLiteral("eanReason"), input.value()}});
        item->setAdditionalData(QStringLiteral("orvel"), keys.at(size_t(input.pick(int(keys.size())))), value);
    }
    return item;
}

QSharedPointer<AbstractDocument> document(FuzzedInput &input)
{
    const std::array<int, 4> types{EDocumentType::Sale, EDocumentType::Back, EDocumentType::BackBySale, EDocumentType::CashIn};
    const int type = types.at(size_t(input.pick(int(types.size()))));
    QSharedPointer<AbstractDocument> document;
    if (type == EDocumentType::BackBySale) {
        auto backBySale = QSharedPointer<BackBySaleDocument>::create();
        const int length = input.pick(3) == 0 ? input.pick(30) : (input.flag() ? 24 : 12);
        backBySale->setSaleIdentifier(input.flag() ? input.digits(length) : input.text(size_t(length)));
        if (input.flag()) {
            auto source = QSharedPointer<AbstractDocument>::create(EDocumentType::Sale);
            source->setDateTime(QDateTime::fromSecsSinceEpoch(input.integer()));
            backBySale->setSourceDocument(source);
        }
        document = backBySale;
    } else if (type == EDocumentType::Back) {
        document = QSharedPointer<BackDocument>::create();
    } else {
        document = QSharedPointer<AbstractDocument>::create(type);
    }
    document->setId(QStringLiteral("fuzz"));
    document->setShopCode(input.text(6));
    document->setDateTime(QDateTime::fromSecsSinceEpoch(input.integer()));
    document->setBackReasonDictionaryKind(input.pick(5) - 1);
    document->setRoundingSum(input.number());
    if (input.flag())
        document->setCommonBackReason(input.value());
    if (input.pick(3) != 0)
        document->addCardRecord(QSharedPointer<DocumentCardRecord>::create(LoyaltySystemType, input.value()));
    for (int count = input.pick(4); count > 0; --count)
        document->addGoodsItem(position(input));
    for (int count = input.pick(4); count > 0; --count) {
        auto payment = QSharedPointer<MoneyItem>::create();
        payment->setValCode(input.integer());
        payment->setValutType(input.pick(4));
        payment->setAmount(input.number());
        payment->setChange(input.flag());
        payment->setCardNum(input.text(8));
        document->addMoneyItem(payment);
    }
    if (input.flag()) {
        QVariantMap invoice;
        invoice.insert(QStringLiteral("cashCode"), input.flag() ? QVariant(input.digits(4)) : input.value());
        invoice.insert(QStringLiteral("invoiceNumber"), input.flag() ? QVariant(input.digits(6)) : input.value());
        invoice.insert(QStringLiteral("storeNumber"), input.value());
        invoice.insert(QStringLiteral("invoiceDate"), input.value());
        document->setDocumentProperty(QStringLiteral("invoiceInfo"), input.pick(5) == 0 ? input.value() : QVariant(invoice));
    }
    if (input.flag())
        document->setPluginData(LoyaltySystemType, QStringLiteral("token"), input.value());
    if (input.flag()) {
        const QVariantMap answer{{QStringLiteral("requestHashSum"), input.value()},
                                 {QStringLiteral("response"), input.flag() ? input.value()
                                                                           : QVariant(QVariantMap{{QStringLiteral("Key4"), input.value()}})}};
        document->setPluginData(LoyaltySystemType, QStringLiteral("adviceNoteResponse"), input.flag() ? QVariant(answer) : input.value());
    }
    return document;
}

// The action's own values, as a host or another plug-in may have left them.
control::Action action(FuzzedInput &input, control::EActionType type, const QSharedPointer<AbstractDocument> &bound)
{
    const control::Action action(type, {});
    switch (type) {
    case control::AddPosition:
    case control::SelectBackReason:
        if (input.pick(3) != 0) {
            const auto positions = bound ? bound->getGoodsItems() : QList<QSharedPointer<GoodsItem>>();
            control::args::Core(action).setPosition(positions.isEmpty() || input.flag() ? position(input)
                                                                                         : positions.first());
        }
        if (input.flag())
            action.insert(QStringLiteral("target"), input.flag() ? QVariant(QStringLiteral("document")) : input.value());
        action.insert(QStringLiteral("kind"), input.pick(3));
        action.insert(QStringLiteral("positionNumber"), input.value());
        break;
    case control::AttemptToBackBySale:
        switch (input.pick(6)) {
        case 0:
            action.insert(QStringLiteral("document"), QVariant::fromValue(bound));
            break;
        case 1:
            action.insert(QStringLiteral("document"), QVariant::fromValue(qSharedPointerObjectCast<BackDocument>(bound)));
            break;
        case 2:
            action.insert(QStringLiteral("document"), QVariant::fromValue(qSharedPointerObjectCast<BackBySaleDocument>(bound)));
            break;
        case 3:
            action.insert(QStringLiteral("document"), QVariant::fromValue(QSharedPointer<AbstractDocument>()));
            break;
        case 4:
            action.insert(QStringLiteral("document"), input.value());
            break;
        default:
            break;
        }
        break;
    case control::AddPayment:
        action.insert(QStringLiteral("valutCode"), input.flag() ? input.numberText() : input.value().toString());
        action.insert(QStringLiteral("amount"), input.number());
        break;
    case control::BackBySale:
        action.insert(QStringLiteral("orvel"), input.flag() ? QVariant(true) : input.value());
        if (input.flag())
            action.insert(QStringLiteral("processed"), input.value());
        break;
    default:
        if (input.flag())
            action.insert(input.text(8), input.value());
        break;
    }
    return action;
}

// The host's own side of the actions the hooks start: the cashier types a
// quantity or a price (or cancels), or the till goes back to the menu.
void installHostActions()
{
    const auto typed = [](modifiers::Type type) {
        return [type](const control::Action &) {
            if (currentInput->pick(4) == 0)
                return EContext::Stop;
            const double value = currentInput->number();
            Singleton<Session>::instance()->getModifiers().setValue(
                type, type == modifiers::Quantity ? QVariant::fromValue(Quantity(value)) : QVariant(value));
            return EContext::Continue;
        };
    };
    pipeline->setHostAction(control::InputQuantity, typed(modifiers::Quantity));
    pipeline->setHostAction(control::InputPrice, typed(modifiers::Price));
    pipeline->setHostAction(control::ExitToMenu, [](const control::Action &) {
        Singleton<ContextManager>::instance()->setCurrentContext(EContext::Menu);
        return EContext::Continue;
    });
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // The loaded plug-in, the host and Qt give this target tens of thousands
    // of coverage features, and libFuzzer's entropic schedule then spends
    // four fifths of the time on its own bookkeeping. Its flags are read after
    // this function: this one goes first, so the command line may override it.
    static std::vector<char *> arguments(*argv, *argv + *argc);
    static char plainSchedule[] = "-entropic=0";
    arguments.insert(arguments.begin() + 1, plainSchedule);
    arguments.push_back(nullptr);
    *argc = int(arguments.size()) - 1;
    *argv = arguments.data();

    silenceQtMessages();
    new QCoreApplication(*argc, *argv);
    folder = new QTemporaryDir;
    fuzzRequire(folder->isValid(), "a temporary folder");
    plugin = new till::PluginHost;
    QString error;
    const bool loaded = plugin->load(QStringLiteral(TESSARO_PLUGIN_DIR), &error);
    if (!loaded)
        std::fprintf(stderr, "%s\n", qPrintable(error));
    fuzzRequire(loaded && plugin->loyaltySystem(), "the plug-in loads and offers its loyalty system");
    pipeline = new ActionPipeline;
    pipeline->addPlugin(plugin->plugin());
    installHostActions();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedInput input(data, size);
    currentInput = &input;
    installHost(input);
    BasicLoyaltySystem *loyaltySystem = plugin->loyaltySystem();
    const QSharedPointer<AbstractDocument> bound = document(input);

    try {
        // A host may bind its document before it initialises the plug-in.
        const bool bindFirst = input.pick(4) == 0;
        if (bindFirst)
            loyaltySystem->setDocument(bound);
        try {
            plugin->plugin()->init();
        } catch (const std::exception &) {
            // init passes a failure of the client's construction to the host, which gives up.
            plugin->plugin()->deinit();
            HostObjects::resetAll();
            return 0;
        }
        Singleton<Session>::instance()->setCurrentDocument(bound);
        if (!bindFirst)
            loyaltySystem->setDocument(bound);
        if (input.flag())
            loyaltySystem->restoreLoyaltySystem();
        Singleton<ActionQueueController>::instance()->processQueue();

        for (int count = 1 + input.pick(8); count > 0 && !input.exhausted(); --count) {
            const ActionKind kind = actionKinds.at(size_t(input.pick(int(actionKinds.size()))));
            ModifiersContainer &modifiers = Singleton<Session>::instance()->getModifiers();
            modifiers.clear();
            if (input.flag())
                modifiers.setValue(modifiers::Quantity, input.flag() ? QVariant::fromValue(Quantity(input.number())) : input.value());
            if (input.flag())
                modifiers.setValue(modifiers::Price, input.value());
            Singleton<ContextManager>::instance()->setCurrentContext(kind.context);
            const EContext::Result result = pipeline->run(action(input, kind.type, bound));
            fuzzRequire(result == EContext::Stop || result == EContext::Continue || result == EContext::NotHandled,
                        "a hook answers 0, 2 or 3");
            Singleton<ActionQueueController>::instance()->processQueue();
            switch (input.pick(8)) {
            case 0:
                loyaltySystem->cancel();
                break;
            case 1:
                loyaltySystem->setDocument(input.flag() ? QSharedPointer<AbstractDocument>() : document(input));
                break;
            default:
                break;
            }
        }
    } catch (...) {
        fuzzRequire(false, "no exception reaches the host");
    }

    plugin->plugin()->deinit();
    loyaltySystem->setDocument({});
    HostObjects::resetAll();
    currentInput = nullptr;
    return 0;
}
