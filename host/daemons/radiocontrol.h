// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_RADIOCONTROL_H
#define MORVEK_HOSTD_RADIOCONTROL_H

#include "answer.h"

namespace morvek {

struct WifiRequest;

/*! What carries out the Wi-Fi daemon's requests. */
class RadioControl
{
public:
    virtual ~RadioControl() = default;

    /*!
     * Carries \a request out, which is well-formed, or begins to, or refuses it. That for a new network is answered
     * with its identifier.
     */
    virtual void carryOut(const WifiRequest &request, const AnswerCall &answer) = 0;
};

} // namespace morvek

#endif
