#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QRegularExpression>
#include <QString>

namespace tessaro::contracts {

/// Stands stable placeholders in for secrets: the first secret it is told of
/// becomes "secret-placeholder-1", the next "secret-placeholder-2", and the
/// same secret is the same placeholder throughout, so a cassette still shows
/// which request carried which token without holding the token. A secret is
/// also found in its Base64, Base64url and percent-encoded forms, and as the
/// credentials of an "Authorization" value ("Basic …", "Bearer …").
///
/// What is secret is decided elsewhere (the project's secret mask); this class
/// only keeps the mapping and applies it.
class PlaceholderMap
{
public:
    /// Secrets shorter than this are not replaced: a one-letter "secret"
    /// would turn every text into placeholders.
    static constexpr int shortestSecret = 4;

    /// The placeholder for \a secret, made when it is new; empty for a
    /// secret too short to replace or one that is a placeholder already.
    QString add(const QString &secret);
    /// \a text with every known secret, in every form, replaced.
    QByteArray apply(const QByteArray &text) const;
    QString apply(const QString &text) const;
    int size() const { return int(m_placeholders.size()); }

    /// Whether \a text holds a placeholder.
    static bool holdsPlaceholder(const QString &text);
    static bool holdsPlaceholder(const QByteArray &text);
    /// What the placeholders look like.
    static const QRegularExpression &pattern();
    /// \a text with each placeholder that \a values names replaced by its value.
    static QByteArray substitute(const QByteArray &text, const QHash<QString, QString> &values);

private:
    QHash<QString, QString> m_placeholders;
    /// Every form of every secret with its placeholder, longest first, so
    /// that a secret inside a longer one does not split it.
    QList<QPair<QByteArray, QByteArray>> m_forms;
};

} // namespace tessaro::contracts
