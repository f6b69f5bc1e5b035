#pragma once

#include "contracts/cassetteexchange.h"
#include "contracts/driftrules.h"

#include <QByteArray>
#include <QJsonValue>
#include <QList>
#include <QString>

namespace tessaro::contracts {

/// Compares an answer with the recorded one by contract, not by bytes: the
/// status, the keys present and missing, the types of the values, arrays
/// empty or not, and the values themselves except where the rules let them
/// vary. A recorded value holding a placeholder (a secret) may vary too.
class ContractComparer
{
public:
    /// One difference: where, and what it is.
    struct Difference
    {
        /// The field's path ("items[0].quantity"); "status" or "body" for the whole answer.
        QString path;
        /// "missing", "new", "type string → number", "value 2 → 3"…
        QString text;
    };

    explicit ContractComparer(const DriftRules &rules = DriftRules());

    QList<Difference> compare(int recordedStatus, const QByteArray &recordedBody, int status, const QByteArray &body) const;
    /// The answer's headers by contract: the media type of "Content-Type"
    /// (parameters such as the charset ignored) when one was recorded, as
    /// "header content-type"; no other header is compared.
    QList<Difference> compareHeaders(const CassetteExchange::Headers &recorded, const CassetteExchange::Headers &headers) const;

private:
    void compareValues(const QString &path, const QJsonValue &recorded, const QJsonValue &value, QList<Difference> *differences) const;

    DriftRules m_rules;
};

} // namespace tessaro::contracts
