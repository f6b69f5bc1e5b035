#include "inputmultitextparams.h"

#include <QVariantList>

Event InputMultiTextParams::getEvent(int code) const
{
    QVariantList fields;
    for (const Field &field : m_fields) {
        fields << QVariantMap{
            {QStringLiteral("name"), field.name},
            {QStringLiteral("type"), field.type == Date ? QStringLiteral("date") : QStringLiteral("string")},
            {QStringLiteral("label"), field.label.text()},
            {QStringLiteral("labelId"), field.label.id()},
            {QStringLiteral("value"), field.value},
            {QStringLiteral("pattern"), field.pattern},
            {QStringLiteral("format"), field.format},
        };
    }
    const QVariantMap params{
        {QStringLiteral("title"), m_title.text()},
        {QStringLiteral("titleId"), m_title.id()},
        {QStringLiteral("button"), m_button.text()},
        {QStringLiteral("buttonId"), m_button.id()},
        {QStringLiteral("fields"), fields},
    };
    return Event(code, {{QStringLiteral("params"), params}});
}
