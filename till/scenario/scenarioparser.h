#pragma once

#include "scenario.h"
#include "inputerror.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace till {

/// Reads a till scenario from JSON text.
///
/// parse() only looks at the bytes it is given: it touches no file, no host
/// object and no global state, so it can be fed any buffer (a fuzzer does).
/// The first problem found ends the reading; error() then names the place
/// (a JSON path such as actions[3].type, or line and column for a syntax
/// error) and what is wrong.
class ScenarioParser
{
public:
    /// \a fileName only labels the error messages.
    explicit ScenarioParser(const QString &fileName = QString());

    std::optional<Scenario> parse(const QByteArray &json);
    /// Reads a till description alone: the form of a scenario's "till" part,
    /// which is also the form of a data folder's dictionaries.json.
    std::optional<TillSettings> parseTillSettings(const QByteArray &json);
    /// Reads a position alone, in the form of an "add" action's "position".
    std::optional<PositionSpec> parsePosition(const QJsonObject &object);
    /// Reads a payment alone, in the form of a "pay" action: "code",
    /// "amount", "change" and "details".
    std::optional<PaymentSpec> parsePayment(const QJsonObject &object);
    InputError error() const { return m_error; }

    /// Reads and parses the file \a path; the error also covers a file that cannot be read.
    static std::optional<Scenario> parseFile(const QString &path, InputError *error);

private:
    template <typename Value, typename Reader>
    std::optional<Value> read(const QByteArray &json, const QString &what, Reader reader);
    template <typename Value, typename Reader>
    std::optional<Value> readObject(const QJsonObject &object, Reader reader);

    QString m_fileName;
    InputError m_error;
};

} // namespace till
