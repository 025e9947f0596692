// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKLOG_H
#define MORVEK_NETWORKLOG_H

#include "krellogger.h"

namespace morvek {

/*!
 * The library's lines in the system log. Their texts are put together only when they are wanted.
 */
namespace NetworkLog {

constexpr unsigned short MessageCode = 1300;

/*! Writes \a pieces, whatever a text stream takes, with nothing between them. */
template<typename... Pieces>
void warning(const Pieces &...pieces)
{
    if (KrelLogger::getVerbosity() <= 2)
        return;
    KrelStream stream = KrelLogger().warning(MessageCode);
    (stream << ... << pieces);
}

template<typename... Pieces>
void debug1(const Pieces &...pieces)
{
    if (KrelLogger::getVerbosity() <= 5)
        return;
    KrelStream stream = KrelLogger().debug1(MessageCode);
    (stream << ... << pieces);
}

} // namespace NetworkLog

} // namespace morvek

#endif
