// SPDX-License-Identifier: Apache-2.0
#include "controlrequest.h"

#include "wirenames.h"

namespace morvek {

ControlRequest::ControlRequest(const ZopChangeset &changes)
    : message(changes.assignments.value(Wire::Msg).toString()),
      id(changes.assignments.value(Wire::Id)),
      peer(changes.assignments.value(Wire::Peer))
{
}

} // namespace morvek
