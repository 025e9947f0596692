// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_INTERFACECONTROL_H
#define MORVEK_HOSTD_INTERFACECONTROL_H

#include "answer.h"

namespace morvek {

struct NetworkingRequest;

/*! What carries out the networking daemon's requests. */
class InterfaceControl
{
public:
    virtual ~InterfaceControl() = default;

    /*! Carries \a request out, which is well-formed, or begins to, or refuses it. */
    virtual void carryOut(const NetworkingRequest &request, const AnswerCall &answer) = 0;
};

} // namespace morvek

#endif
