// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_CONTROLREQUEST_H
#define MORVEK_HOSTD_CONTROLREQUEST_H

#include "refusal.h"
#include "zopchangeset.h"

namespace morvek {

/*! What the requests on all control objects have in common. */
struct ControlRequest
{
    ControlRequest() = default;
    /*! Reads the client's update of the control object. */
    explicit ControlRequest(const ZopChangeset &changes);

    void refuseUnknown();
    /*! Refuses a payload where there is to be none. */
    void expectNothing(const ZopVariant &dat);

    int number = 0; //!< in the book of requests
    QString message;
    ZopVariant id;
    ZopVariant peer;
    Refusal refusal; //!< what is wrong with it, as far as it can be judged without knowing the world
};

} // namespace morvek

#endif
