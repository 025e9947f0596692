// SPDX-License-Identifier: Apache-2.0
// In the place of everything else here where libnm was not there to build with.
#include "managedmachine.h"

namespace morvek {

struct ManagedMachine::Parts
{
};

ManagedMachine::ManagedMachine(const ManagerOptions &, World *, const Pace *, const EventLog *) { }

ManagedMachine::~ManagedMachine() = default;

bool ManagedMachine::start(const QString &, const QVector<Service> &, QString *error)
{
    *error = QStringLiteral("--network manager is not part of this build, which was made without libnm");
    return false;
}

void ManagedMachine::setGrown(const std::function<void()> &) { }

void ManagedMachine::giveBack(const std::function<void()> &done)
{
    done();
}

InterfaceControl *ManagedMachine::interfaces() const
{
    return nullptr;
}

RadioControl *ManagedMachine::radio() const
{
    return nullptr;
}

HotspotControl *ManagedMachine::hotspot() const
{
    return nullptr;
}

} // namespace morvek
