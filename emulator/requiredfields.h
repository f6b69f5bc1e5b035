#pragma once

#include <QJsonObject>
#include <QStringList>

namespace tessaro::emulator {

/// Finds the mandatory fields a request body lacks. Fields are named by dotted
/// paths ("header.originalInvoice"); a field is missing when absent or null.
class RequiredFields
{
public:
    /// The paths among `paths` that the body lacks, in the given order.
    static QStringList missing(const QJsonObject &body, const QStringList &paths);
    /// The fields that each element of the array at arrayPath lacks, named
    /// "<arrayPath>[<index>].<field>".
    static QStringList missingInEach(const QJsonObject &body, const QString &arrayPath,
                                     const QStringList &fields);
};

} // namespace tessaro::emulator
