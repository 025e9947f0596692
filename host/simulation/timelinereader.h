// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_TIMELINEREADER_H
#define MORVEK_HOSTD_TIMELINEREADER_H

#include "scenario.h"

namespace morvek {

class JsonNode;

/*! What events are called. */
QStringList eventWords();
/*! The events of \a node in order of time, for \a scenario, which has its interfaces already. */
QVector<TimelineEvent> readTimeline(const JsonNode &node, const Scenario &scenario);

/*! The event of \a node, an entry of a timeline without its time, when there is what \a presence says. */
TimelineEvent readEventOfNow(const JsonNode &node, const Scenario &scenario, Presence presence);

} // namespace morvek

#endif
