#pragma once

#include <abstractdocument.h>

#include <QJsonObject>

namespace till {

/// The state of a document as a report shows it: kind, whether it is closed,
/// the plug-in's data on it, its properties, its positions with their
/// additional data, its payments and cards.
class DocumentSnapshot
{
public:
    /// \a pluginSystem selects the plug-in data of that loyalty system.
    static QJsonObject toJson(const AbstractDocument &document, int pluginSystem);
};

} // namespace till
