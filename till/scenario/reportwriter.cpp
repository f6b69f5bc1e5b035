#include "reportwriter.h"

#include "jsonfile.h"
#include "jsontext.h"
#include "reportwords.h"

#include "secrets/secretmask.h"

#include <QJsonArray>

namespace till {

namespace {

const SecretMask &mask()
{
    thread_local const SecretMask mask;
    return mask;
}

/// A text as a line of the terminal may show it: secrets masked, control
/// characters escaped (a dialog's text may carry a service's error text).
QString shown(const QString &text)
{
    return mask().line(text);
}

QStringList shown(const QStringList &texts)
{
    QStringList result;
    for (const QString &text : texts)
        result << shown(text);
    return result;
}

/// A value as the report shows it; null is a cancelled answer.
QString compact(const QJsonValue &value)
{
    return shown(JsonText::of(mask().json(value), QStringLiteral("cancelled"), QString()));
}

QString shortened(const QString &text, int length)
{
    return text.size() <= length ? text : text.left(length - 1) + QStringLiteral("…");
}

QString values(const QJsonObject &object)
{
    QStringList parts;
    for (auto it = object.constBegin(); it != object.constEnd(); ++it)
        parts << QStringLiteral("%1 = %2").arg(it.key(), shortened(compact(it.value()), 70));
    return parts.join(QStringLiteral("; "));
}

QString documentType(int type)
{
    switch (type) {
    case 1:
        return QStringLiteral("sale");
    case 2:
        return QStringLiteral("return");
    case 25:
        return QStringLiteral("return by sale");
    default:
        break;
    }
    return QStringLiteral("type %1").arg(type);
}

} // namespace

QString ReportWriter::progressLine(const ActionRecord &record, int actionCount)
{
    QString line = record.type == QLatin1String("start") ? QStringLiteral("[till] %1").arg(shown(record.title))
                                                         : QStringLiteral("[%1/%2] %3").arg(record.index + 1).arg(actionCount).arg(shown(record.title));
    if (record.result)
        line += QStringLiteral(" → %1").arg(*record.result);
    QStringList counts;
    if (!record.dialogs.isEmpty())
        counts << ReportWords::count(record.dialogs.size(), QStringLiteral("dialog(s)"));
    if (!record.requests.isEmpty())
        counts << ReportWords::count(record.requests.size(), QStringLiteral("request(s)"));
    if (!counts.isEmpty())
        line += QStringLiteral("  (%1)").arg(ReportWords::tally(counts));
    if (!record.failures.isEmpty())
        line += QStringLiteral("  ") + ReportWords::verdict(false);
    return line;
}

QString ReportWriter::details(const ActionRecord &record)
{
    QStringList lines;
    for (const HookStep &step : record.steps) {
        QString line = QStringLiteral("    %1 %2").arg(step.kind, -7).arg(step.actionType);
        if (step.triggerId != 0)
            line += QStringLiteral(" (trigger %1, priority %2)").arg(step.triggerId).arg(step.priority);
        lines << line + QStringLiteral(" → %1").arg(step.result);
    }
    for (const DialogRecord &dialog : record.dialogs) {
        QString line = QStringLiteral("    %1 %2 \"%3\"").arg(dialog.kind, -8).arg(shown(dialog.id), shortened(shown(dialog.text), 90));
        if (!dialog.items.isEmpty())
            line += QStringLiteral(" [%1]").arg(shown(dialog.items).join(QStringLiteral(" | ")));
        const QString answer = compact(dialog.answer);
        if (!answer.isEmpty())
            line += QStringLiteral(" → %1").arg(answer);
        lines << line;
    }
    for (const RequestRecord &request : record.requests) {
        const QString outcome = request.networkError
            ? QStringLiteral("no answer (%1)").arg(request.errorText.isEmpty() ? QString::number(request.errorCode) : shown(request.errorText))
            : QStringLiteral("HTTP %1").arg(request.httpCode);
        lines << QStringLiteral("    request %1 %2 → %3").arg(shown(request.method), shown(request.path), outcome);
    }
    for (const QString &note : record.notes)
        lines << QStringLiteral("    note    %1").arg(shown(note));
    for (const QString &failure : record.failures)
        lines << QStringLiteral("    ") + ReportWords::failure(shown(failure));
    return lines.join(QLatin1Char('\n'));
}

QString ReportWriter::document(const QString &name, const QJsonObject &given)
{
    const QJsonObject snapshot = mask().json(given).toObject();
    QStringList lines;
    lines << QStringLiteral("  %1 (%2, %3, %4)")
                 .arg(shown(name), shown(snapshot.value(QStringLiteral("id")).toString()),
                      documentType(snapshot.value(QStringLiteral("type")).toInt()),
                      snapshot.value(QStringLiteral("closed")).toBool() ? QStringLiteral("closed") : QStringLiteral("open"));
    const QJsonObject pluginData = snapshot.value(QStringLiteral("pluginData")).toObject();
    if (!pluginData.isEmpty())
        lines << QStringLiteral("    plug-in data: %1").arg(values(pluginData));
    const QJsonObject properties = snapshot.value(QStringLiteral("properties")).toObject();
    if (!properties.isEmpty())
        lines << QStringLiteral("    properties:   %1").arg(values(properties));
    if (!snapshot.value(QStringLiteral("commonReason")).isNull())
        lines << QStringLiteral("    common reason: %1").arg(compact(snapshot.value(QStringLiteral("commonReason"))));
    for (const QJsonValue &value : snapshot.value(QStringLiteral("positions")).toArray()) {
        const QJsonObject position = value.toObject();
        QString line = QStringLiteral("    position %1: %2 ×%3 at %4")
                           .arg(position.value(QStringLiteral("posnum")).toInt())
                           .arg(shown(position.value(QStringLiteral("code")).toString()),
                                compact(position.value(QStringLiteral("quantity"))),
                                compact(position.value(QStringLiteral("price"))));
        const QJsonObject data = position.value(QStringLiteral("data")).toObject();
        for (auto ns = data.constBegin(); ns != data.constEnd(); ++ns) {
            const QJsonObject entries = ns.value().toObject();
            for (auto entry = entries.constBegin(); entry != entries.constEnd(); ++entry)
                line += QStringLiteral("; %1.%2 = %3").arg(shown(ns.key()), shown(entry.key()), shortened(compact(entry.value()), 50));
        }
        lines << line;
    }
    QStringList payments;
    for (const QJsonValue &value : snapshot.value(QStringLiteral("payments")).toArray())
        payments << QStringLiteral("%1 in %2").arg(compact(value[QStringLiteral("amount")])).arg(value[QStringLiteral("code")].toInt());
    if (!payments.isEmpty())
        lines << QStringLiteral("    payments: %1").arg(payments.join(QStringLiteral(", ")));
    return lines.join(QLatin1Char('\n'));
}

QString ReportWriter::text(const Report &report)
{
    QStringList lines;
    lines << QStringLiteral("Scenario: %1").arg(shown(report.scenario));
    lines << QStringLiteral("Till: %1; plug-in: %2; service: %3").arg(shown(report.dataFolder), shown(report.plugin), shown(report.service));
    for (const ActionRecord &record : report.actions) {
        lines << progressLine(record, report.actionCount);
        const QString more = details(record);
        if (!more.isEmpty())
            lines << more;
    }
    lines << QStringLiteral("Documents:");
    for (auto it = report.documents.cbegin(); it != report.documents.cend(); ++it)
        lines << document(it.key(), it.value());
    const QStringList failures = report.allFailures();
    if (failures.isEmpty()) {
        lines << QStringLiteral("Result: ") + ReportWords::verdict(true);
    } else {
        lines << QStringLiteral("Result: %1, %2:").arg(ReportWords::verdict(false), ReportWords::count(failures.size(), QStringLiteral("failure(s)")));
        for (const QString &failure : failures)
            lines << QStringLiteral("  - %1").arg(shown(failure));
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

bool ReportWriter::writeJson(const Report &report, const QString &file, QString *error)
{
    return JsonFile::write(file, report.toJson(), error);
}

} // namespace till
