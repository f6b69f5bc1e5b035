#include "formpresenter.h"

#include "actionlog.h"
#include "cashier.h"
#include "formrequest.h"

#include <QJsonObject>
#include <QQmlContext>
#include <QQmlEngine>

namespace till {

FormPresenter::FormPresenter(Cashier *cashier, ActionLog *log)
    : m_cashier(cashier)
    , m_log(log)
{
}

FormPresenter::~FormPresenter() = default;

Event FormPresenter::present(const qml::ViewDescriptor &view)
{
    if (!m_engine)
        m_engine = std::make_unique<QQmlEngine>();
    // The form reads its fields from the context the view sets up, so that is
    // where the till reads them too.
    QQmlContext context(m_engine->rootContext());
    if (view.setup)
        view.setup(&context);
    QVariant params = context.contextProperty(QStringLiteral("params"));
    if (!params.isValid())
        params = view.event.value(QStringLiteral("params"));
    const FormRequest form(view.form, params.toMap());

    QStringList fieldNames;
    for (const FormRequest::Field &field : form.fields())
        fieldNames << field.name;
    const std::optional<QVariantMap> texts = m_cashier->fill(form);
    m_log->addDialog({QStringLiteral("form"), form.title().id(), form.title().text(), fieldNames,
                      texts ? QJsonValue(QJsonObject::fromVariantMap(*texts)) : QJsonValue(QJsonValue::Null)});
    if (!texts)
        return Event();

    QVariantMap data;
    for (const FormRequest::Field &field : form.fields())
        data.insert(field.name, field.answerValue(texts->value(field.name).toString()));
    return Event(view.event.getCode(), {{QStringLiteral("data"), data}});
}

} // namespace till
