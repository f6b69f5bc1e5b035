#pragma once

#include "emulator/reply.h"

#include <QString>

namespace tessaro::emulator {

class EmulatorSettings;
class ServiceState;

/// /payload/<id> and /messages/<id>: data the service prepares for a cart.
class ContentEndpoints
{
public:
    ContentEndpoints(const EmulatorSettings &settings, ServiceState &state);

    /// The configured payload with that id; else, for a cart's uuid, the cart
    /// with the payments of its PAID request; else 404.
    Reply payload(const QString &id) const;
    /// A top-level array [{"message": text}]: the configured texts for that id,
    /// else the messages of the cart with that uuid, else empty.
    Reply messages(const QString &id) const;

private:
    const EmulatorSettings &m_settings;
    ServiceState &m_state;
};

} // namespace tessaro::emulator
