// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKLOG_P_H
#define MORVEK_NETWORKLOG_P_H

#include "krellogger.h"

namespace morvek {

/*!
 * The library's lines in the system log. Their texts are put together only when they are wanted.
 */
namespace NetworkLog {

constexpr unsigned short MessageCode = 1300;

template<typename... Pieces>
void write(KrelStream stream, Pieces &...pieces)
{
    (stream << ... << pieces);
}

/*! Writes \a pieces, whatever a text stream takes, with nothing between them. */
template<typename... Pieces>
void error(Pieces &&...pieces)
{
    if (KrelLogger::getVerbosity() >= 2)
        write(KrelLogger().error(MessageCode), pieces...);
}

template<typename... Pieces>
void warning(Pieces &&...pieces)
{
    if (KrelLogger::getVerbosity() >= 3)
        write(KrelLogger().warning(MessageCode), pieces...);
}

template<typename... Pieces>
void debug1(Pieces &&...pieces)
{
    if (KrelLogger::getVerbosity() >= 6)
        write(KrelLogger().debug1(MessageCode), pieces...);
}

template<typename... Pieces>
void debug2(Pieces &&...pieces)
{
    if (KrelLogger::getVerbosity() >= 7)
        write(KrelLogger().debug2(MessageCode), pieces...);
}

} // namespace NetworkLog

} // namespace morvek

#endif
