#include "emulator/contentendpoints.h"

#include "emulator/emulatorsettings.h"
#include "emulator/servicestate.h"

#include <QJsonArray>

namespace tessaro::emulator {

ContentEndpoints::ContentEndpoints(const EmulatorSettings &settings, ServiceState &state)
    : m_settings(settings)
    , m_state(state)
{
}

Reply ContentEndpoints::payload(const QString &id) const
{
    if (m_settings.payloads.contains(id))
        return Reply::json(200, m_settings.payloads.value(id));
    const auto cart = m_state.carts.find(id);
    if (!cart)
        return Reply::message(404, QStringLiteral("Payload wasn't found"));
    QJsonObject payload = cart->toJson();
    payload.remove(QStringLiteral("messages"));
    const QJsonObject paid = cart->statusBody();
    payload.insert(QStringLiteral("payment"), paid.value(QStringLiteral("payment")).toArray());
    payload.insert(QStringLiteral("fiscalReceiptNumber"), paid.value(QStringLiteral("fiscalReceiptNumber")).toString());
    return Reply::json(200, payload);
}

Reply ContentEndpoints::messages(const QString &id) const
{
    QStringList texts = m_settings.messages.value(id);
    if (!m_settings.messages.contains(id)) {
        if (const auto cart = m_state.carts.find(id))
            texts = cart->messages();
    }
    QJsonArray array;
    for (const QString &text : texts)
        array.append(QJsonObject{{QStringLiteral("message"), text}});
    return Reply::json(200, array);
}

} // namespace tessaro::emulator
