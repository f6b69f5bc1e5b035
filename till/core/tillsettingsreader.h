#pragma once

#include "inputerror.h"
#include "tillsettings.h"

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include <optional>

namespace till {

/// Reads a till description: a data folder's dictionaries.json, which is
/// also the form of a scenario's "till" part (store, till, shift, cashier,
/// fiscal registrar, configuration, return reasons and currencies).
class TillSettingsReader
{
public:
    /// Reads the JSON text \a json; nothing, and \a error says what is wrong
    /// and where (its file name is kept), at the first problem.
    static std::optional<TillSettings> read(const QByteArray &json, InputError *error);
    /// Reads the file \a path; nothing, and \a error says what is wrong and
    /// where, when it cannot be read or holds no till description.
    static std::optional<TillSettings> readFile(const QString &path, QString *error);
    /// Reads the description at \a path of a larger JSON text; a problem
    /// ends the reading with a detail::Failure.
    static TillSettings at(const QJsonValue &value, const QString &path);
};

} // namespace till
