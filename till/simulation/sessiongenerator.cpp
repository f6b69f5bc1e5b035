#include "sessiongenerator.h"

#include "emulatedtillconstants.h"

namespace till {

namespace {

template <typename Random>
bool chance(Random &random, double probability)
{
    return std::uniform_real_distribution<double>(0.0, 1.0)(random) < probability;
}

template <typename Random>
int between(Random &random, int low, int high)
{
    return std::uniform_int_distribution<int>(low, high)(random);
}

template <typename Random, typename T>
T pick(Random &random, std::initializer_list<T> values)
{
    return *(values.begin() + between(random, 0, int(values.size()) - 1));
}

QString text(const char *value)
{
    return QString::fromLatin1(value);
}

} // namespace

SessionGenerator::SessionGenerator(const Rates &rates)
    : m_rates(rates)
{
}

quint64 SessionGenerator::sessionSeed(quint64 runSeed, quint64 index)
{
    // splitmix64: neighbouring indexes give unrelated seeds.
    quint64 z = runSeed + 0x9e3779b97f4a7c15ULL * (index + 1);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    // 53 bits: a seed stays exact as a JSON number.
    return (z ^ (z >> 31)) & ((quint64(1) << 53) - 1);
}

QDateTime SessionGenerator::epoch()
{
    return QDateTime(QDate(2024, 3, 1), QTime(10, 0), Qt::UTC);
}

SimulatedSession SessionGenerator::generate(quint64 seed) const
{
    Random random(seed);
    SimulatedSession session;
    session.seed = seed;
    session.faultRate = m_rates.fault;
    session.scenario.name = QStringLiteral("Simulated session %1").arg(seed);
    session.scenario.till = till(random, &session);
    const int documents = between(random, 1, 3);
    for (int i = 1; i <= documents; ++i) {
        const DocumentSpec described = document(random, i);
        session.scenario.documents << described;
        session.scenario.actions << actions(random, described);
    }
    session.killChild = chance(random, m_rates.kill / 10.0);
    session.killRequest = between(random, 0, 2);
    return session;
}

TillSettings SessionGenerator::till(Random &random, SimulatedSession *session) const
{
    TillSettings settings;
    session->timeoutSeconds = pick(random, {1, 1, 2});
    session->serviceShiftOpen = chance(random, 0.8);
    session->auth = pick(random, {SimulatedSession::Auth::Token, SimulatedSession::Auth::Token, SimulatedSession::Auth::None,
                                  SimulatedSession::Auth::Gateway});
    settings.config.insert(QStringLiteral("Tessaro:timeout"), QString::number(session->timeoutSeconds));
    settings.config.insert(QStringLiteral("Tessaro:useTokenAuth"),
                           session->auth == SimulatedSession::Auth::Token ? QStringLiteral("true") : QStringLiteral("false"));
    const bool gateway = session->auth == SimulatedSession::Auth::Gateway;
    settings.config.insert(QStringLiteral("OrvelGate:tessaro"), gateway ? QStringLiteral("true") : QStringLiteral("false"));
    if (gateway) {
        settings.config.insert(QStringLiteral("OrvelGate:appKey"), emulated::appKey);
        settings.config.insert(QStringLiteral("OrvelGate:appSecret"), emulated::appSecret);
    }
    settings.config.insert(QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"), chance(random, 0.5) ? QStringLiteral("true") : QStringLiteral("false"));
    // The data folder of a simulated till starts without currency tables: these are all it has.
    for (int pairs = between(random, 0, 2); pairs > 0; --pairs)
        settings.config.insert(QStringLiteral("Tessaro.ForbiddenMixedValuts:%1").arg(between(random, 1, 4)), QString::number(between(random, 1, 4)));
    for (int pairs = between(random, 0, 2); pairs > 0; --pairs)
        settings.config.insert(QStringLiteral("TessaroBack.AdditionalBackBySaleValuts:%1").arg(between(random, 1, 4)),
                               QString::number(between(random, 1, 4)));

    QList<TillSettings::Reason> reasons;
    const int reasonCount = pick(random, {0, 1, 3, 3});
    const QStringList names{QStringLiteral("Брак"), QStringLiteral("Не подошёл размер"), QStringLiteral("Покупатель передумал")};
    for (int i = 0; i < reasonCount; ++i)
        reasons << TillSettings::Reason{2, i + 1, names.at(i)};
    settings.backReasons = reasons;
    settings.currencies = QList<TillSettings::Currency>{{1, QStringLiteral("Наличные"), 1},
                                                        {2, QStringLiteral("Банковская карта"), 2},
                                                        {3, QStringLiteral("Подарочный сертификат"), 3},
                                                        {4, QStringLiteral("Бонусы"), 4}};
    return settings;
}

DocumentSpec SessionGenerator::document(Random &random, int index) const
{
    DocumentSpec described;
    described.name = QStringLiteral("d%1").arg(index);
    described.type = pick(random, {2, 2, 25, 25, 1});
    described.dateTime = epoch().addSecs(60 * index);
    if (chance(random, 0.7))
        described.card = pick(random, {text("2770000000013"), text("12345678901234567"), text("123456789012345678"),
                                       text("1234567890123456789"), text("42")});
    if (chance(random, 0.3))
        described.commonReason = between(random, 1, 3);
    if (described.type == 2 && chance(random, 0.5)) {
        QVariantMap invoice{{QStringLiteral("cashCode"), QString::number(emulated::tillNo)},
                            {QStringLiteral("storeNumber"), QString::number(emulated::storeNo)},
                            {QStringLiteral("invoiceDate"), QStringLiteral("2024-02-01")}};
        if (chance(random, 0.8))
            invoice.insert(QStringLiteral("invoiceNumber"), QString::number(400 + index));
        described.properties.insert(QStringLiteral("invoiceInfo"), invoice);
    }
    if (described.type == 25) {
        described.saleIdentifier = pick(random, {text("000701022024000012000345"), text("000701022024000012000345"),
                                                 text("000701022024"), text("0007010220"), text("0007010220240000120003456"),
                                                 text(""), text("ABCDEFGHIJKLMNOPQRSTUVWX")});
        if (!described.saleIdentifier.isEmpty() && chance(random, 0.5))
            described.saleDate = QDate(2024, 2, 1);
    }
    return described;
}

QList<ScenarioAction> SessionGenerator::actions(Random &random, const DocumentSpec &document) const
{
    QList<ScenarioAction> actions;
    ScenarioAction opener;
    opener.document = document.name;
    if (document.type == 25) {
        opener.type = ScenarioAction::BackBySale;
        opener.orvel = document.saleIdentifier.isEmpty() || chance(random, 0.3);
    } else {
        opener.type = ScenarioAction::Bind;
    }
    QList<ScenarioAction> planned{opener};
    for (int count = between(random, 0, 8); count > 0; --count)
        planned << action(random);
    for (int attempts = pick(random, {1, 1, 2, 3}); attempts > 0; --attempts) {
        ScenarioAction close;
        close.type = ScenarioAction::Close;
        close.hostRefuses = chance(random, 0.15);
        planned << close;
    }
    for (const ScenarioAction &action : std::as_const(planned)) {
        actions << action;
        if (chance(random, m_rates.kill)) {
            ScenarioAction restart;
            restart.type = ScenarioAction::Restart;
            actions << restart;
        }
    }
    return actions;
}

ScenarioAction SessionGenerator::action(Random &random) const
{
    ScenarioAction action;
    const int roll = between(random, 0, 99);
    if (roll < 32) {
        action.type = ScenarioAction::Add;
        action.position = position(random);
        if (chance(random, 0.6))
            action.quantity = pick(random, {1.0, 0.0004, 0.004, 2.0, 1.5, 3.0});
        if (chance(random, 0.6))
            action.price = pick(random, {0.004, 150.0, 99.99, 1.0, 0.01});
    } else if (roll < 48) {
        action.type = ScenarioAction::Pay;
        action.payment = payment(random);
    } else if (roll < 60) {
        action.type = ScenarioAction::Reason;
        action.reasonForDocument = chance(random, 0.4);
        action.positionNumber = between(random, 1, 4);
    } else if (roll < 68) {
        action.type = ScenarioAction::Card;
        action.number = pick(random, {text("2770000000013"), text("123456789012345678"), text("12345678901234567"), text("7")});
    } else if (roll < 75) {
        action.type = ScenarioAction::Coupon;
        action.number = pick(random, {text("2550000000017"), text("2559999999999"), text("1")});
    } else if (roll < 82) {
        action.type = ScenarioAction::Input;
    } else if (roll < 87) {
        action.type = ScenarioAction::StornoAll;
    } else {
        action.type = ScenarioAction::Close;
        action.hostRefuses = chance(random, 0.2);
    }
    return action;
}

PositionSpec SessionGenerator::position(Random &random)
{
    PositionSpec position;
    position.code = pick(random, {text("100200"), text("100300"), text("1001"), text("4600000000012")});
    position.barcode = chance(random, 0.5) ? QStringLiteral("46000000000%1").arg(between(random, 10, 99)) : QString();
    position.name = QStringLiteral("Товар %1").arg(position.code);
    position.fractional = chance(random, 0.3);
    position.vatIndex = pick(random, {-1, -1, 0, 1});
    if (position.vatIndex >= 0) {
        position.vatRate = 20.0;
        position.vatCodes = {1, 2};
        position.vatSums = {2.5, 1.0};
    }
    if (chance(random, 0.15))
        position.goodsKitBarcode = QStringLiteral("0104600000000012215abc");
    if (chance(random, 0.1))
        position.exciseMark = QStringLiteral("22N0000123456789012345678");
    if (chance(random, 0.15)) {
        position.data.insert(QStringLiteral("orvel"),
                             {{QStringLiteral("traceability"),
                               QVariantMap{{QStringLiteral("cdn"), QStringLiteral("CDN-1")}, {QStringLiteral("gtin"), QStringLiteral("04600000000012")}}}});
    }
    return position;
}

PaymentSpec SessionGenerator::payment(Random &random)
{
    PaymentSpec payment;
    payment.code = between(random, 1, 4);
    payment.amount = pick(random, {100.0, 150.0, 0.01, 1000.0, 49.5});
    payment.change = payment.code == 1 && chance(random, 0.15);
    return payment;
}

} // namespace till
