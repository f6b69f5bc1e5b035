#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QSharedPointer>

class AbstractDocument;

/// Writes a document with everything plug-ins keep on it as JSON, and reads it back.
class DocumentSerializer
{
public:
    static QJsonObject toJson(const AbstractDocument &document);
    /// The document described by \a json (a BackDocument or BackBySaleDocument
    /// by its type), or null when \a json is not a document.
    static QSharedPointer<AbstractDocument> fromJson(const QJsonObject &json);
};
