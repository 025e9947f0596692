// SPDX-License-Identifier: Apache-2.0
#include "managedstand.h"

bool ManagedStand::start(DaemonFixture *daemon)
{
    return prepare()
        && daemon->serve(
            {QStringLiteral("--network"), QStringLiteral("manager"), QStringLiteral("--speed"), QStringLiteral("20")});
}
