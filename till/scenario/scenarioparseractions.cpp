// ScenarioParser: the actions of a scenario, each checked against the
// documents it names.

#include "scenarioparserdetail.h"

namespace till::detail {

ScenarioAction actionAt(const QJsonValue &value, const QString &path, const Scenario &scenario)
{
    const QJsonObject object = objectAt(value, path);
    const QString typePath = child(path, QStringLiteral("type"));
    const QString typeName = stringAt(required(object, path, QStringLiteral("type")), typePath);
    const QStringList names = ScenarioAction::typeNames();
    if (!names.contains(typeName))
        fail(typePath, QStringLiteral("unknown action %1 (expected one of: %2)").arg(quoted(typeName), names.join(QStringLiteral(", "))));

    ScenarioAction action;
    action.path = path;
    action.type = ScenarioAction::Type(names.indexOf(typeName));
    const QStringList common{QStringLiteral("type"), QStringLiteral("note"), QStringLiteral("expect")};
    switch (action.type) {
    case ScenarioAction::Bind:
    case ScenarioAction::BackBySale: {
        allowOnly(object, path, common + QStringList{QStringLiteral("document"), QStringLiteral("orvel")});
        const QString at = child(path, QStringLiteral("document"));
        action.document = stringAt(required(object, path, QStringLiteral("document")), at);
        const DocumentSpec *described = scenario.document(action.document);
        if (!described)
            fail(at, QStringLiteral("no document %1 in documents").arg(quoted(action.document)));
        if (action.type == ScenarioAction::BackBySale) {
            if (described->type != 25)
                fail(at, QStringLiteral("a return by sale needs a document of type returnBySale"));
            action.orvel = object.contains(QStringLiteral("orvel"))
                ? boolAt(object.value(QStringLiteral("orvel")), child(path, QStringLiteral("orvel")))
                : described->saleIdentifier.isEmpty();
        } else if (object.contains(QStringLiteral("orvel"))) {
            fail(child(path, QStringLiteral("orvel")), QStringLiteral("only a backBySale action takes orvel"));
        }
        break;
    }
    case ScenarioAction::Card:
    case ScenarioAction::Coupon:
        allowOnly(object, path, common + QStringList{QStringLiteral("number")});
        action.number = textAt(required(object, path, QStringLiteral("number")), child(path, QStringLiteral("number")));
        break;
    case ScenarioAction::Add:
        allowOnly(object, path, common + QStringList{QStringLiteral("position"), QStringLiteral("quantity"), QStringLiteral("price")});
        action.position = positionAt(required(object, path, QStringLiteral("position")), child(path, QStringLiteral("position")));
        if (object.contains(QStringLiteral("quantity")))
            action.quantity = numberAt(object.value(QStringLiteral("quantity")), child(path, QStringLiteral("quantity")));
        if (object.contains(QStringLiteral("price")))
            action.price = numberAt(object.value(QStringLiteral("price")), child(path, QStringLiteral("price")));
        break;
    case ScenarioAction::Reason: {
        allowOnly(object, path, common + QStringList{QStringLiteral("target"), QStringLiteral("position")});
        const QString at = child(path, QStringLiteral("target"));
        const QString target = stringAt(required(object, path, QStringLiteral("target")), at);
        if (target == QLatin1String("document")) {
            action.reasonForDocument = true;
            if (object.contains(QStringLiteral("position")))
                fail(child(path, QStringLiteral("position")), QStringLiteral("a reason for the document names no position"));
        } else if (target == QLatin1String("position")) {
            action.positionNumber = integerAt(required(object, path, QStringLiteral("position")), child(path, QStringLiteral("position")));
        } else {
            fail(at, QStringLiteral("expected \"document\" or \"position\", found %1").arg(quoted(target)));
        }
        break;
    }
    case ScenarioAction::Pay:
        action.payment = paymentAt(object, path, common);
        break;
    case ScenarioAction::Close:
        allowOnly(object, path, common + QStringList{QStringLiteral("hostRefuses")});
        if (object.contains(QStringLiteral("hostRefuses")))
            action.hostRefuses = boolAt(object.value(QStringLiteral("hostRefuses")), child(path, QStringLiteral("hostRefuses")));
        break;
    case ScenarioAction::Input:
    case ScenarioAction::StornoAll:
    case ScenarioAction::Restart:
        allowOnly(object, path, common);
        break;
    }
    if (object.contains(QStringLiteral("note")))
        action.note = stringAt(object.value(QStringLiteral("note")), child(path, QStringLiteral("note")));
    if (object.contains(QStringLiteral("expect"))) {
        const QString at = child(path, QStringLiteral("expect"));
        action.expect = expectationAt(object.value(QStringLiteral("expect")), at, true);
        if (action.expect.result && !action.hasResult())
            fail(child(at, QStringLiteral("result")), QStringLiteral("a %1 action has no result").arg(typeName));
    }
    for (auto it = action.expect.documents.constBegin(); it != action.expect.documents.constEnd(); ++it) {
        if (!scenario.document(it.key()))
            fail(child(child(path, QStringLiteral("expect.documents")), it.key()),
                 QStringLiteral("no document %1 in documents").arg(quoted(it.key())));
    }
    return action;
}

} // namespace till::detail
