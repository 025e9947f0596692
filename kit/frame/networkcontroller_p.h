// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKCONTROLLER_P_H
#define MORVEK_NETWORKCONTROLLER_P_H

#include "networkcontroller.h"
#include "networkservices.h"
#include "servicekeeper_p.h"

namespace morvek {

class NetworkController::Private
{
public:
    Daemon daemon;
    QPointer<NetworkServices> services;
    QPointer<ServiceKeeper> keeper;
    Availability availability = Waiting;
    int uninterruptible = 0;
};

} // namespace morvek

#endif
