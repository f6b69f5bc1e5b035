#include "contracts/cassettefile.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QSaveFile>

namespace tessaro::contracts {

std::optional<Cassette> CassetteFile::read(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: cannot read the cassette: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        *error = QStringLiteral("%1: not a cassette: %2 at byte %3")
                     .arg(path, document.isNull() ? parseError.errorString() : QStringLiteral("no JSON object"))
                     .arg(parseError.offset);
        return std::nullopt;
    }
    QString problem;
    auto cassette = Cassette::fromJson(document.object(), &problem);
    if (!cassette)
        *error = QStringLiteral("%1: %2").arg(path, problem);
    return cassette;
}

bool CassetteFile::write(const Cassette &cassette, const QString &path, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(cassette.toJson()).toJson(QJsonDocument::Indented)) < 0
        || !file.commit()) {
        *error = QStringLiteral("%1: cannot write the cassette: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace tessaro::contracts
