#include "simpleformatter.h"

#include <QObject>
#include <QRegularExpression>
#include <QVariant>

SimpleFormatter::~SimpleFormatter() = default;

QString SimpleFormatter::format(const QString &templateText, const QString &name, const QObject *source) const
{
    static const QRegularExpression placeholder(QStringLiteral("\\{([A-Za-z_][A-Za-z0-9_]*)\\}"));
    QString result;
    qsizetype last = 0;
    for (auto it = placeholder.globalMatch(templateText); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        result += templateText.mid(last, match.capturedStart() - last);
        const QString property = match.captured(1);
        if (property == QLatin1String("name"))
            result += name;
        else if (source)
            result += source->property(property.toLatin1().constData()).toString();
        last = match.capturedEnd();
    }
    result += templateText.mid(last);
    return result;
}
