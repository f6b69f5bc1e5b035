#include "sessionfile.h"

#include "emulatedtillconstants.h"
#include "jsonfile.h"
#include "scenarioparser.h"

#include <emulator/emulatorsettings.h>
#include <emulator/fault.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace till {

namespace {

QJsonValue orNull(bool cancel, const QJsonValue &value)
{
    return cancel ? QJsonValue(QJsonValue::Null) : value;
}

QJsonObject positionJson(const PositionSpec &position)
{
    QJsonObject json{{QStringLiteral("code"), position.code}, {QStringLiteral("vatIndex"), position.vatIndex}};
    if (!position.barcode.isEmpty())
        json.insert(QStringLiteral("barcode"), position.barcode);
    if (!position.name.isEmpty())
        json.insert(QStringLiteral("name"), position.name);
    if (position.fractional)
        json.insert(QStringLiteral("fractional"), true);
    if (position.vatIndex >= 0) {
        json.insert(QStringLiteral("vatRate"), position.vatRate);
        QJsonArray codes;
        for (int code : position.vatCodes)
            codes << code;
        QJsonArray sums;
        for (double sum : position.vatSums)
            sums << sum;
        json.insert(QStringLiteral("vatCodes"), codes);
        json.insert(QStringLiteral("vatSums"), sums);
    }
    if (!position.goodsKitBarcode.isEmpty())
        json.insert(QStringLiteral("goodsKitBarcode"), position.goodsKitBarcode);
    if (!position.exciseMark.isEmpty())
        json.insert(QStringLiteral("exciseMark"), position.exciseMark);
    if (!position.data.isEmpty()) {
        QJsonObject data;
        for (auto it = position.data.cbegin(); it != position.data.cend(); ++it)
            data.insert(it.key(), QJsonObject::fromVariantMap(it.value()));
        json.insert(QStringLiteral("data"), data);
    }
    return json;
}

QJsonObject actionJson(const ScenarioAction &action)
{
    QJsonObject json{{QStringLiteral("type"), ScenarioAction::typeName(action.type)}};
    switch (action.type) {
    case ScenarioAction::Bind:
        json.insert(QStringLiteral("document"), action.document);
        break;
    case ScenarioAction::BackBySale:
        json.insert(QStringLiteral("document"), action.document);
        json.insert(QStringLiteral("orvel"), action.orvel);
        break;
    case ScenarioAction::Card:
    case ScenarioAction::Coupon:
        json.insert(QStringLiteral("number"), action.number);
        break;
    case ScenarioAction::Add:
        json.insert(QStringLiteral("position"), positionJson(action.position));
        if (action.quantity)
            json.insert(QStringLiteral("quantity"), *action.quantity);
        if (action.price)
            json.insert(QStringLiteral("price"), *action.price);
        break;
    case ScenarioAction::Reason:
        json.insert(QStringLiteral("target"), action.reasonForDocument ? QStringLiteral("document") : QStringLiteral("position"));
        if (!action.reasonForDocument)
            json.insert(QStringLiteral("position"), action.positionNumber);
        break;
    case ScenarioAction::Pay:
        json.insert(QStringLiteral("code"), action.payment.code);
        json.insert(QStringLiteral("amount"), action.payment.amount);
        if (action.payment.change)
            json.insert(QStringLiteral("change"), true);
        break;
    case ScenarioAction::Close:
        if (action.hostRefuses)
            json.insert(QStringLiteral("hostRefuses"), true);
        break;
    case ScenarioAction::Input:
    case ScenarioAction::StornoAll:
    case ScenarioAction::Restart:
        break;
    }
    return json;
}

QJsonObject answerJson(const CashierAnswer &answer)
{
    switch (answer.kind) {
    case CashierAnswer::Choice:
        return {{QStringLiteral("choice"), orNull(answer.cancel, answer.index)}};
    case CashierAnswer::Form:
        return {{QStringLiteral("form"), orNull(answer.cancel, QJsonObject::fromVariantMap(answer.fields))}};
    case CashierAnswer::Quantity:
        return {{QStringLiteral("quantity"), orNull(answer.cancel, answer.number)}};
    case CashierAnswer::Price:
        break;
    }
    return {{QStringLiteral("price"), orNull(answer.cancel, answer.number)}};
}

QJsonObject documentJson(const DocumentSpec &document)
{
    static const QHash<int, QString> types{{1, QStringLiteral("sale")}, {2, QStringLiteral("return")}, {25, QStringLiteral("returnBySale")}};
    QJsonObject json{{QStringLiteral("type"), types.value(document.type)}};
    if (!document.saleIdentifier.isEmpty())
        json.insert(QStringLiteral("saleIdentifier"), document.saleIdentifier);
    if (document.saleDate)
        json.insert(QStringLiteral("saleDate"), document.saleDate->toString(Qt::ISODate));
    if (document.dateTime)
        json.insert(QStringLiteral("dateTime"), document.dateTime->toString(Qt::ISODate));
    if (!document.card.isEmpty())
        json.insert(QStringLiteral("card"), document.card);
    if (document.commonReason.isValid())
        json.insert(QStringLiteral("commonReason"), document.commonReason.toInt());
    if (!document.properties.isEmpty())
        json.insert(QStringLiteral("properties"), QJsonObject::fromVariantMap(document.properties));
    return json;
}

QJsonObject tillJson(const TillSettings &till)
{
    QJsonObject config;
    for (auto it = till.config.cbegin(); it != till.config.cend(); ++it)
        config.insert(it.key(), it.value());
    QJsonArray reasons;
    for (const TillSettings::Reason &reason : till.backReasons.value_or(QList<TillSettings::Reason>()))
        reasons << QJsonObject{{QStringLiteral("code"), reason.code}, {QStringLiteral("name"), reason.name}, {QStringLiteral("kind"), reason.kind}};
    QJsonArray currencies;
    for (const TillSettings::Currency &currency : till.currencies.value_or(QList<TillSettings::Currency>()))
        currencies << QJsonObject{{QStringLiteral("code"), currency.code}, {QStringLiteral("name"), currency.name}, {QStringLiteral("type"), currency.type}};
    return {{QStringLiteral("config"), config}, {QStringLiteral("backReasons"), reasons}, {QStringLiteral("currencies"), currencies}};
}

} // namespace

QJsonObject SessionFile::scenarioJson(const SimulatedSession &session, const QString &description)
{
    QJsonObject documents;
    for (const DocumentSpec &document : session.scenario.documents)
        documents.insert(document.name, documentJson(document));
    QJsonArray answers;
    for (const CashierAnswer &answer : session.scenario.answers)
        answers << answerJson(answer);
    QJsonArray actions;
    for (const ScenarioAction &action : session.scenario.actions)
        actions << actionJson(action);
    return {{QStringLiteral("name"), session.scenario.name},
            {QStringLiteral("description"), description},
            {QStringLiteral("till"), tillJson(session.scenario.till)},
            {QStringLiteral("documents"), documents},
            {QStringLiteral("answers"), answers},
            {QStringLiteral("actions"), actions}};
}

QJsonObject SessionFile::emulatorJson(const SimulatedSession &session)
{
    QJsonArray faults;
    QHash<QString, int> earlier;
    QList<SessionFault> ordered = session.faults;
    std::stable_sort(ordered.begin(), ordered.end(), [](const SessionFault &a, const SessionFault &b) { return a.ordinal < b.ordinal; });
    for (const SessionFault &planned : std::as_const(ordered)) {
        // An unreachable service is written as the reset its kind holds.
        tessaro::emulator::Fault fault(planned.kind, planned.path, 1);
        // A fault that strikes lets the requests before it pass, except those the faults before it took.
        fault.skip = planned.ordinal - earlier.value(planned.path);
        earlier[planned.path] += 1;
        fault.delayMs = planned.delayMs;
        fault.status = planned.status;
        fault.body = planned.body;
        faults << fault.toJson();
    }
    QJsonObject json{{QStringLiteral("auth"), SimulatedSession::authName(session.auth)},
                     {QStringLiteral("tills"), QJsonArray{QJsonObject{{QStringLiteral("storeNo"), emulated::storeNo},
                                                                      {QStringLiteral("tillNo"), emulated::tillNo},
                                                                      {QStringLiteral("shiftOpen"), session.serviceShiftOpen}}}},
                     {QStringLiteral("faults"), faults}};
    if (session.auth == SimulatedSession::Auth::Gateway)
        json.insert(QStringLiteral("gateway"), QJsonObject{{QStringLiteral("appKey"), emulated::appKey},
                                                           {QStringLiteral("appSecret"), emulated::appSecret}});
    return json;
}

QString SessionFile::write(const SimulatedSession &session, const QString &folder, const QString &name, const QString &description,
                           QString *error)
{
    const QDir dir(folder);
    if (!dir.mkpath(QStringLiteral("emulator"))) {
        *error = QStringLiteral("cannot create %1").arg(dir.filePath(QStringLiteral("emulator")));
        return QString();
    }
    const QString file = dir.filePath(name + QStringLiteral(".json"));
    if (!JsonFile::write(file, scenarioJson(session, description), error)
        || !JsonFile::write(dir.filePath(QStringLiteral("emulator/") + name + QStringLiteral(".json")), emulatorJson(session), error))
        return QString();
    return file;
}

std::optional<SimulatedSession> SessionFile::load(const QString &scenarioFile, QString *error)
{
    const QFileInfo info(scenarioFile);
    QFile scenario(scenarioFile);
    QFile emulator(info.dir().filePath(QStringLiteral("emulator/") + info.fileName()));
    for (QFile *file : {&scenario, &emulator}) {
        if (!file->open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("cannot read %1: %2").arg(file->fileName(), file->errorString());
            return std::nullopt;
        }
    }
    return read(scenario.readAll(), emulator.readAll(), scenarioFile, error);
}

std::optional<SimulatedSession> SessionFile::read(const QByteArray &scenario, const QByteArray &emulator, const QString &name, QString *error)
{
    ScenarioParser parser(name);
    const std::optional<Scenario> parsed = parser.parse(scenario);
    if (!parsed) {
        *error = parser.error().toString();
        return std::nullopt;
    }
    const std::optional<tessaro::emulator::EmulatorSettings> settings =
        tessaro::emulator::EmulatorSettings::fromJson(QJsonDocument::fromJson(emulator).object(), error);
    if (!settings)
        return std::nullopt;
    SimulatedSession session;
    session.scenario = *parsed;
    session.scripted = true;
    session.timeoutSeconds = parsed->till.config.value(QStringLiteral("Tessaro:timeout"), QStringLiteral("1")).toInt();
    using AuthMode = tessaro::emulator::EmulatorSettings::AuthMode;
    session.auth = settings->authMode == AuthMode::None ? SimulatedSession::Auth::None
        : settings->authMode == AuthMode::Gateway        ? SimulatedSession::Auth::Gateway
                                                         : SimulatedSession::Auth::Token;
    session.serviceShiftOpen = settings->tills.isEmpty() || settings->tills.first().shiftOpen;
    QHash<QString, int> earlier;
    for (const tessaro::emulator::Fault &fault : settings->faults) {
        SessionFault planned;
        planned.path = fault.path;
        planned.ordinal = fault.skip + earlier.value(fault.path);
        earlier[fault.path] += 1;
        planned.kind = fault.kind;
        planned.delayMs = fault.delayMs;
        planned.status = fault.status;
        planned.body = fault.body;
        session.faults << planned;
    }
    return session;
}

} // namespace till
