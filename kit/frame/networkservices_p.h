// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKSERVICES_P_H
#define MORVEK_NETWORKSERVICES_P_H

#include "networkservices.h"
#include "servicekeeper_p.h"

#include <array>

namespace morvek {

class NetworkServices::Private
{
public:
    /*! That of \a daemon, a NetworkController::Daemon; made when it is asked for first. */
    ServiceKeeper *keeper(int daemon);
    void setUninterruptible(int change);

    NetworkServices *q;
    std::array<std::unique_ptr<ServiceKeeper>, 3> keepers;
    int uninterruptible = 0;
    int retryPause = 1000;
    int watchPause = 1000;
};

} // namespace morvek

#endif
