// SPDX-License-Identifier: Apache-2.0
#ifndef PRIVATEHALF_H
#define PRIVATEHALF_H

#include "networkinterfacedata.h"
#include "networkinterfaceservice_p.h"

/*!
 * The private half of a service, which the class hides: naming a member in an explicit instantiation is allowed
 * whatever its access.
 */
template<auto Member>
struct PrivateHalf
{
    friend auto &privateHalf(morvek::NetworkInterfaceService &service) { return service.*Member; }
};

template struct PrivateHalf<&morvek::NetworkInterfaceService::d>;

auto &privateHalf(morvek::NetworkInterfaceService &service);

#endif
