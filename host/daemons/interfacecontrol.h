// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_INTERFACECONTROL_H
#define MORVEK_HOSTD_INTERFACECONTROL_H

#include "refusal.h"

namespace morvek {

struct NetworkingRequest;

/*! What carries out the networking daemon's requests. */
class InterfaceControl
{
public:
    virtual ~InterfaceControl() = default;

    /*! Why \a request, which is well-formed, cannot be carried out now. */
    virtual Refusal refuses(const NetworkingRequest &request) const = 0;
    /*! Begins to carry \a request out. */
    virtual void perform(const NetworkingRequest &request) = 0;
};

} // namespace morvek

#endif
