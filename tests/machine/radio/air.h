// SPDX-License-Identifier: Apache-2.0
#ifndef AIR_H
#define AIR_H

#include <QtCore/QByteArray>

/*!
 * What is around the unit's radio in the guest, see scene.sh, and what others than the daemons see of the unit. Each
 * function waits until it is done, and fails the test when that does not happen.
 */
namespace Air {

/*! Whether the unit hears the access points of wlan1, wlan2 or wlan3, and they hear it. */
void setInRange(int radio, bool inRange);
/*! Has the access point of wlan1, wlan2 or wlan3 say goodbye and end, or start again. */
void setServing(int radio, bool serving);
/*! Has wlan2 or wlan3 ask the unit to go to the other one. */
void askToRoam(int from);

/*! The access point that the kernel is associated with; empty when there is none. */
QByteArray associated();
/*! The IPv4 addresses of an interface of the unit, separated by blanks. */
QByteArray addresses(const QByteArray &interface);
/*! The profiles that the manager has active, in their order, separated by blanks. */
QByteArray activeProfiles();
/*! Every profile that the manager has, as it would tell root with its secrets, each line one setting. */
QByteArray profiles();
/*! The files of those that the manager keeps in memory only; \a which of them, in words of find. */
QByteArray profilesInMemory(const QByteArray &which = QByteArray());

/*! Joins the unit's hotspot with a client, "client" or "passenger", and has it ask for an address. */
void joinHotspot(const QByteArray &client, const QByteArray &name, const QByteArray &passphrase);
void leaveHotspot(const QByteArray &client);
/*! Whether a client reaches an address. */
bool reaches(const QByteArray &client, const QByteArray &address);
/*! The address of a client in the hotspot. */
QByteArray addressOf(const QByteArray &client);

} // namespace Air

#endif
