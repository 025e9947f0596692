// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_APPLIEDSETTINGS_H
#define MORVEK_HOSTD_APPLIEDSETTINGS_H

#include "gobject.h"

#include <QtCore/QStringList>

namespace morvek {

/*! The IPv4 settings that the manager has applied to a device, as a text (GVariant's) that holds no secrets. */
namespace AppliedSettings {

QByteArray ipv4Of(NMConnection *connection);
/*! The addresses that \a ipv4 gives by hand. */
QStringList addressesOf(const QByteArray &ipv4);

/*! Whether there are addresses to come with \a ipv4. */
bool givesAddresses(const QByteArray &ipv4);

/*! Called with the settings, or with an empty text and the reason. */
using Taker = std::function<void(const QByteArray &ipv4, const GError *error)>;
void read(NMDevice *device, QObject *context, const Taker &taker);

/*! Has \a device get \a ipv4, and keep all its other settings (Reapply). \a answer gets null, or why it was refused. */
void replace(NMDevice *device, const QByteArray &ipv4, QObject *context,
             const std::function<void(const GError *)> &answer);

} // namespace AppliedSettings

} // namespace morvek

#endif
