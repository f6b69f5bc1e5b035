#pragma once

#include "event.h"
#include "tr.h"

#include <QList>
#include <QString>

/// A request for several text fields at once (a form), sent to the interface
/// as an event.
///
/// The event carries "params": {"title", "titleId", "button", "buttonId",
/// "fields": [{"name", "type" ("string" or "date"), "label", "labelId",
/// "value", "pattern", "format"}]}.
class InputMultiTextParams
{
public:
    enum FieldType {
        String,
        Date,
    };

    struct Field
    {
        QString name;
        FieldType type = String;
        tr::Tr label;
        QString value;
        /// A regular expression the whole value must match; empty accepts anything.
        QString pattern;
        /// For dates: how the date is shown and typed ("dd.MM.yyyy").
        QString format;
    };

    void setTitle(const tr::Tr &title) { m_title = title; }
    tr::Tr title() const { return m_title; }
    void setButton(const tr::Tr &button) { m_button = button; }
    tr::Tr button() const { return m_button; }
    void addField(const Field &field) { m_fields << field; }
    QList<Field> fields() const { return m_fields; }

    /// The request as an event of \a code.
    Event getEvent(int code) const;

private:
    tr::Tr m_title;
    tr::Tr m_button;
    QList<Field> m_fields;
};
