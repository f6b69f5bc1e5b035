#pragma once

#include "response.h"

#include <QMetaType>
#include <QObject>
#include <QVariantMap>

namespace tessaro {

/// The service's answer to an advice note (a return), kept with the digest of
/// the request that produced it, so that the same return confirmed again
/// unchanged is not sent a second time.
///
/// Equality is the Response's: requestHashSum takes no part in it, so two
/// answers that differ only in the digest compare equal.
class AdviceNoteResponse : public Response
{
    Q_GADGET
    /// Lower-case hex MD5 of the request body; empty until the sender sets it,
    /// so a default value matches no request.
    Q_PROPERTY(QString requestHashSum MEMBER requestHashSum)
    /// The answer's body: the base's JSON object.
    Q_PROPERTY(QJsonObject response MEMBER object)

public:
    AdviceNoteResponse() = default;
    /// Copies the answer; the digest stays empty for the sender to fill in.
    explicit AdviceNoteResponse(const Response &response);

    static AdviceNoteResponse fromMap(const QVariantMap &map);
    QVariantMap toMap() const;

    QString uuid() const;
    /// "Key4", or "key4" when "Key4" is missing or not text: the number the
    /// service gave the return invoice.
    QString key4() const;

    QString requestHashSum;
};

} // namespace tessaro

Q_DECLARE_METATYPE(tessaro::AdviceNoteResponse)
