// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_RECORDEDEVENT_H
#define MORVEK_RECORDEDEVENT_H

#include "zopchangeset.h"

namespace morvek {

/*! Something that happened to a state object. */
struct RecordedEvent
{
    enum Kind {
        Present, //!< it was there when the recording began
        Created,
        Updated,
        Gone,
    };

    Kind kind = Present;
    qint64 time = 0;      //!< in milliseconds since the recording began
    QString object;       //!< its path
    ZopChangeset changes; //!< all that it holds, of Present and Created; of Updated, the update
};

} // namespace morvek

#endif
