#pragma once

#include "emulator/reply.h"

#include <QJsonObject>
#include <QStringList>

#include <optional>

namespace tessaro::emulator {

/// Finds the mandatory fields a request body lacks. Fields are named by dotted
/// paths ("header.originalInvoice"); a field is missing when absent or null.
class RequiredFields
{
public:
    /// The service's refusal of an incomplete body, nothing when it is
    /// complete: 400 "Missed mandatory fields: ..." naming the missing paths
    /// and, when arrayPath is given, the fields each element of that array
    /// lacks ("items[0].returnReason"); 400 "Invalid data type" when arrayPath
    /// holds something other than an array.
    static std::optional<Reply> refusal(const QJsonObject &body, const QStringList &paths,
                                        const QString &arrayPath = QString(),
                                        const QStringList &elementFields = QStringList());

    /// The paths among `paths` that the body lacks, in the given order.
    static QStringList missing(const QJsonObject &body, const QStringList &paths);
};

} // namespace tessaro::emulator
