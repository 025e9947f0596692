// SPDX-License-Identifier: Apache-2.0
#include "managedmachine.h"

#include "managedhotspot.h"
#include "managedinterfaces.h"
#include "managedradio.h"
#include "restoration.h"

namespace morvek {

struct ManagedMachine::Parts
{
    Parts(const ManagerOptions &asked, World *published, const EventLog *lines)
        : options(asked),
          world(published),
          log(lines),
          client(asked.only),
          restoration(&client, asked.remember, lines)
    {
    }

    const ManagerOptions options;
    World *const world;
    const EventLog *const log;
    ManagerClient client;
    Restoration restoration;
    std::unique_ptr<ManagedInterfaces> interfaces {};
    std::unique_ptr<ManagedRadio> radio {};
    std::unique_ptr<ManagedHotspot> hotspot {};
};

ManagedMachine::ManagedMachine(const ManagerOptions &options, World *world, const EventLog *log)
    : m_parts(std::make_unique<Parts>(options, world, log))
{
}

ManagedMachine::~ManagedMachine() = default;

bool ManagedMachine::start(QString *error)
{
    Parts &parts = *m_parts;
    if (!parts.client.start(error))
        return false;
    parts.interfaces = std::make_unique<ManagedInterfaces>(&parts.client, &parts.restoration, parts.world, parts.log);
    if (parts.client.radio()) {
        parts.radio = std::make_unique<ManagedRadio>(&parts.client, &parts.restoration, parts.world, parts.log,
                                                     parts.options.remember);
        parts.hotspot = std::make_unique<ManagedHotspot>(&parts.client, &parts.restoration, parts.world, parts.log);
    }
    return true;
}

InterfaceControl *ManagedMachine::interfaces() const
{
    return m_parts->interfaces.get();
}

RadioControl *ManagedMachine::radio() const
{
    return m_parts->radio.get();
}

HotspotControl *ManagedMachine::hotspot() const
{
    return m_parts->hotspot.get();
}

} // namespace morvek
