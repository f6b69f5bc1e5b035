#include "contracts/textdifference.h"

#include "contracts/placeholdermap.h"

#include <QList>

namespace tessaro::contracts {

namespace {

/// The recorded text cut at its placeholders: the literal pieces between them.
QList<QByteArray> literalPieces(const QByteArray &recorded)
{
    if (!PlaceholderMap::holdsPlaceholder(recorded))
        return {recorded};
    QList<QByteArray> pieces;
    const QString text = QString::fromUtf8(recorded);
    qsizetype from = 0;
    auto matches = PlaceholderMap::pattern().globalMatch(text);
    while (matches.hasNext()) {
        const auto match = matches.next();
        pieces << text.mid(from, match.capturedStart() - from).toUtf8();
        from = match.capturedEnd();
    }
    pieces << text.mid(from).toUtf8();
    return pieces;
}

qsizetype commonPrefix(const QByteArray &a, qsizetype aFrom, const QByteArray &b, qsizetype bFrom)
{
    qsizetype n = 0;
    while (aFrom + n < a.size() && bFrom + n < b.size() && a.at(aFrom + n) == b.at(bFrom + n))
        ++n;
    return n;
}

QString around(const QByteArray &text, qsizetype offset)
{
    constexpr qsizetype context = 24;
    const qsizetype from = qMax<qsizetype>(0, offset - context);
    QString piece = QString::fromUtf8(text.mid(from, offset - from + context));
    if (from > 0)
        piece.prepend(QStringLiteral("…"));
    if (offset + context < text.size())
        piece.append(QStringLiteral("…"));
    return piece;
}

} // namespace

qsizetype TextDifference::firstDifference(const QByteArray &recorded, const QByteArray &sent)
{
    const QList<QByteArray> pieces = literalPieces(recorded);
    // The first piece stands at the start; each later one follows a placeholder,
    // which takes the shortest text that lets the piece be found.
    qsizetype at = commonPrefix(pieces.first(), 0, sent, 0);
    if (at < pieces.first().size())
        return at;
    for (qsizetype i = 1; i < pieces.size(); ++i) {
        const QByteArray &piece = pieces.at(i);
        if (i == pieces.size() - 1 && piece.isEmpty())
            return -1;
        const qsizetype found = sent.indexOf(piece, at);
        if (found < 0)
            return at;
        at = found + piece.size();
    }
    return at == sent.size() ? -1 : at;
}

QString TextDifference::describe(const QByteArray &recorded, const QByteArray &sent, qsizetype offset)
{
    // The recorded text is shown at the same offset: past a placeholder it
    // may be shifted, but it still shows the neighbourhood.
    const qsizetype recordedAt = qMin(offset, recorded.size());
    return QStringLiteral("byte %1: recorded «%2» sent «%3»").arg(offset).arg(around(recorded, recordedAt), around(sent, offset));
}

} // namespace tessaro::contracts
