#include "contracts/driftrules.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tessaro::contracts {

DriftRules::DriftRules(const QStringList &vary, const QStringList &ignore)
    : m_vary(compile(vary))
    , m_ignore(compile(ignore))
{
}

std::optional<DriftRules> DriftRules::read(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: cannot read the rules: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    const QJsonObject json = document.object();
    QStringList lists[2];
    const QString names[2] = {QStringLiteral("vary"), QStringLiteral("ignore")};
    bool valid = document.isObject();
    for (auto it = json.begin(); valid && it != json.end(); ++it)
        valid = (it.key() == names[0] || it.key() == names[1]) && it.value().isArray();
    for (int i = 0; valid && i < 2; ++i) {
        for (const QJsonValue &pattern : json.value(names[i]).toArray()) {
            valid = valid && pattern.isString() && !pattern.toString().isEmpty();
            lists[i] << pattern.toString();
        }
    }
    if (!valid) {
        *error = QStringLiteral("%1: not a rules file: a JSON object with the lists \"vary\" and \"ignore\" of path patterns").arg(path);
        return std::nullopt;
    }
    return DriftRules(lists[0], lists[1]);
}

QString DriftRules::generalPath(const QString &path)
{
    static const QRegularExpression index(QStringLiteral("\\[[0-9]+\\]"));
    QString general = path;
    return general.replace(index, QStringLiteral("[]"));
}

bool DriftRules::varies(const QString &path) const
{
    return matches(m_vary, path) || ignored(path);
}

bool DriftRules::ignored(const QString &path) const
{
    return matches(m_ignore, path);
}

QList<QRegularExpression> DriftRules::compile(const QStringList &patterns)
{
    QList<QRegularExpression> expressions;
    for (const QString &pattern : patterns) {
        QStringList pieces = pattern.split(QLatin1Char('*'));
        for (QString &piece : pieces)
            piece = QRegularExpression::escape(piece);
        expressions << QRegularExpression(QRegularExpression::anchoredPattern(pieces.join(QStringLiteral(".*"))));
    }
    return expressions;
}

bool DriftRules::matches(const QList<QRegularExpression> &expressions, const QString &path)
{
    const QString general = generalPath(path);
    for (const QRegularExpression &expression : expressions) {
        if (expression.match(general).hasMatch())
            return true;
    }
    return false;
}

} // namespace tessaro::contracts
