#pragma once

#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <optional>

namespace tessaro::contracts {

/// Which fields of an answer may change without being drift. A field is
/// named by its path in the JSON answer: keys joined by ".", array elements
/// as "[]" whatever their index ("header.date", "items[].uuid"). Patterns are
/// such paths where "*" stands for any text, dots included ("*uuid" names
/// "uuid", "cart.uuid" and "items[].uuid").
///
/// A rules file is JSON: {"vary": [patterns], "ignore": [patterns]}. A
/// "vary" field must be there with the same type, its value may differ; an
/// "ignore" field may also be missing, added or of another type.
class DriftRules
{
public:
    DriftRules() = default;
    DriftRules(const QStringList &vary, const QStringList &ignore);

    /// Null when the file cannot be read or is no rules file; \a error says why.
    static std::optional<DriftRules> read(const QString &path, QString *error);

    /// \a path with every array index written "[]": the form patterns match.
    static QString generalPath(const QString &path);

    bool varies(const QString &path) const;
    bool ignored(const QString &path) const;

private:
    static QList<QRegularExpression> compile(const QStringList &patterns);
    static bool matches(const QList<QRegularExpression> &expressions, const QString &path);

    QList<QRegularExpression> m_vary;
    QList<QRegularExpression> m_ignore;
};

} // namespace tessaro::contracts
