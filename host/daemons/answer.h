// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_ANSWER_H
#define MORVEK_HOSTD_ANSWER_H

#include "refusal.h"
#include "zopvariant.h"

#include <functional>

namespace morvek {

/*! What a request is answered with. */
struct Answer
{
    Refusal refusal;
    ZopVariant dat; //!< what the reply carries beside that, if anything
};

/*! Sends the reply. It is called once for each request, now or later; nothing comes of it when the daemon has died. */
using AnswerCall = std::function<void(const Answer &answer)>;

} // namespace morvek

#endif
