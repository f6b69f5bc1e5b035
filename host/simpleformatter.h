#pragma once

#include <QString>

class QObject;

/// Fills text templates from an object's properties. Made through
/// MockFactory<SimpleFormatter>.
///
/// A template names a property as {property} ({cardNum}, {rrn}); {name} is the
/// name the template is filled for. Unknown names become empty.
class SimpleFormatter
{
public:
    virtual ~SimpleFormatter();
    virtual QString format(const QString &templateText, const QString &name, const QObject *source) const;
};
