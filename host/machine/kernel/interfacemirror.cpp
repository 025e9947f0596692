// SPDX-License-Identifier: Apache-2.0
#include "interfacemirror.h"

#include "eventlog.h"
#include "wirenames.h"
#include "world.h"

namespace morvek {

void InterfaceMirror::show(const QMap<QString, Attributes> &interfaces, World *world, const EventLog *log)
{
    const QStringList known = world->interfaces();
    for (const QString &name : known) {
        if (!interfaces.contains(name)) {
            log->happened("system", name + QStringLiteral(" is gone"));
            world->removeInterface(name);
        }
    }
    for (auto it = interfaces.begin(); it != interfaces.end(); ++it) {
        if (world->hasInterface(it.key())) {
            world->updateInterface(it.key(), it.value());
        } else {
            log->happened("system", it.key() + QStringLiteral(" is there"));
            world->addInterface(it.key(), it.value());
        }
    }
}

Attributes InterfaceMirror::ranking(const QStringList &routed, const QStringList &all)
{
    QStringList order = routed + all;
    order.removeDuplicates();
    return {{Wire::DefaultInterface, routed.value(0)}, {Wire::Priority, textList(order)}};
}

} // namespace morvek
