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

void ControlRequest::refuseUnknown()
{
    refusal = {Refusal::UnknownMessage, QStringLiteral("unknown message \"%1\"").arg(message)};
}

void ControlRequest::expectNothing(const ZopVariant &dat)
{
    if (!dat.bytes().isEmpty())
        refusal = Refusal::malformed(QStringLiteral("%1 takes no dat").arg(message));
}

} // namespace morvek
