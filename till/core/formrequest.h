#pragma once

#include <tr.h>

#include <QList>
#include <QString>
#include <QVariantMap>

namespace till {

/// A form the plug-in asks the cashier to fill ("InputInvoiceInfo"), read from
/// the "params" of its event: a title, a button and fields, each field with
/// its label, initial value, input check and date format.
class FormRequest
{
public:
    struct Field
    {
        QString name;
        bool isDate = false;
        tr::Tr label;
        QString value;
        /// A regular expression the whole text must match; empty accepts anything.
        QString pattern;
        /// How a date is typed ("dd.MM.yyyy").
        QString format;

        /// Why \a text is no answer for this field; empty when it is one.
        QString check(const QString &text) const;
        /// The answer the form hands back for \a text: a QDate for dates, the text otherwise.
        QVariant answerValue(const QString &text) const;
    };

    FormRequest() = default;
    FormRequest(const QString &form, const QVariantMap &params);

    QString form() const { return m_form; }
    tr::Tr title() const { return m_title; }
    tr::Tr button() const { return m_button; }
    QList<Field> fields() const { return m_fields; }

private:
    QString m_form;
    tr::Tr m_title;
    tr::Tr m_button;
    QList<Field> m_fields;
};

} // namespace till
