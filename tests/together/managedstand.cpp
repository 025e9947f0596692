// SPDX-License-Identifier: Apache-2.0
#include "managedstand.h"

#include "hotspotapplication.h"

bool ManagedStand::start(DaemonFixture *daemon)
{
    const bool isFirst = !QFile::exists(daemon->root());
    if (!prepare() || !daemon->serve({QStringLiteral("--network"), QStringLiteral("manager")}))
        return false;
    if (air.isEmpty() || !isFirst)
        return true;
    const Application service = application();
    return Update(service->setConfiguration(car)).outcome() == QLatin1String("ok");
}
