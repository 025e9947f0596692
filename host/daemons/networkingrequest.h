// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_NETWORKINGREQUEST_H
#define MORVEK_HOSTD_NETWORKINGREQUEST_H

#include "controlrequest.h"

namespace morvek {

/*! How an interface is to be configured. The three texts are addresses when it is manual, else empty. */
struct InterfaceSettings
{
    bool manual = false;
    QString address;
    QString netmask;
    QString gateway;
};

/*! A request on the networking control object, as far as it can be judged without knowing the interfaces. */
struct NetworkingRequest : ControlRequest
{
    enum Kind { Unknown, Connect, Disconnect };

    using ControlRequest::ControlRequest;

    /*! Reads the client's update of the control object. What is wrong with it stands in refusal. */
    static NetworkingRequest read(const ZopChangeset &changes);

    /*! One line that describes it. */
    QString toString() const;

    Kind kind = Unknown;
    QString interface; //!< empty when it could not be read
    InterfaceSettings settings;
};

} // namespace morvek

#endif
