// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_RADIOCONTROL_H
#define MORVEK_HOSTD_RADIOCONTROL_H

#include "refusal.h"

namespace morvek {

struct WifiNetwork;
struct WifiRequest;

/*! What carries out the Wi-Fi daemon's requests. */
class RadioControl
{
public:
    virtual ~RadioControl() = default;

    /*! Why \a request, which is well-formed, cannot be carried out now. */
    virtual Refusal refuses(const WifiRequest &request) const = 0;
    /*! Makes a network known; its identifier. */
    virtual QString addNetwork(const WifiNetwork &network) = 0;
    /*! Begins to carry \a request out; one for a new network is done by addNetwork(). */
    virtual void perform(const WifiRequest &request) = 0;
};

} // namespace morvek

#endif
