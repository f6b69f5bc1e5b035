#pragma once

#include <QJsonValue>
#include <QString>

namespace till {

/// A JSON value as one line of text for a person: objects and arrays as
/// compact JSON, strings quoted, numbers in their shortest form.
class JsonText
{
public:
    /// \a null and \a undefined are what null and a missing value read as.
    static QString of(const QJsonValue &value, const QString &null = QStringLiteral("null"),
                      const QString &undefined = QStringLiteral("nothing"));
};

} // namespace till
