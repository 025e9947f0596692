// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_WIFIREQUEST_H
#define MORVEK_HOSTD_WIFIREQUEST_H

#include "controlrequest.h"

namespace morvek {

/*! A network as a client describes it: open when it has no passkey. */
struct WifiNetwork
{
    QString ssid;
    QString passkey;
};

/*! A request on the Wi-Fi control object, as far as it can be judged without knowing the radio. */
struct WifiRequest : ControlRequest
{
    using ControlRequest::ControlRequest;

    enum Kind { Unknown, Power, Scan, NewNetwork, SelectNetwork, DisableAll };

    /*! Reads the client's update of the control object. What is wrong with it stands in refusal. */
    static WifiRequest read(const ZopChangeset &changes);

    /*! One line that describes it. Neither this nor the refusal ever shows a passkey. */
    QString toString() const;

    Kind kind = Unknown;
    bool power = false;  //!< of Power
    QString identifier;  //!< of SelectNetwork
    WifiNetwork network; //!< of NewNetwork; its ssid also when something else is wrong with it
};

} // namespace morvek

#endif
