// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_INTERFACEMIRROR_H
#define MORVEK_HOSTD_INTERFACEMIRROR_H

#include "attributes.h"

namespace morvek {

class EventLog;
class World;

/*! What every mirror of the machine's interfaces does. */
namespace InterfaceMirror {

/*! Has \a world show \a interfaces, by their names, and no others. */
void show(const QMap<QString, Attributes> &interfaces, World *world, const EventLog *log);

/*!
 * The networking status: interfaces that default routes lead to, \a routed, come first, the preferred one of them is
 * the default; the rest of \a all follows, as a client keeps the old rank of an interface that is not listed.
 */
Attributes ranking(const QStringList &routed, const QStringList &all);

} // namespace InterfaceMirror

} // namespace morvek

#endif
