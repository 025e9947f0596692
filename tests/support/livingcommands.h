// SPDX-License-Identifier: Apache-2.0
#ifndef LIVINGCOMMANDS_H
#define LIVINGCOMMANDS_H

#include "zopdouble.h"

#include <algorithm>

/*! Whether \a commands are all there, as children of \a parent. */
inline bool allBelongTo(const QObject *parent, const QList<ZopDouble::Command> &commands)
{
    return std::all_of(commands.begin(), commands.end(), [parent](const ZopDouble::Command &command) {
        return command.command && command.command->parent() == parent;
    });
}

inline bool allAreGone(const QList<ZopDouble::Command> &commands)
{
    return std::none_of(commands.begin(), commands.end(),
                        [](const ZopDouble::Command &command) { return bool(command.command); });
}

#endif
