// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_FIRSTHOTSPOT_H
#define MORVEK_HOSTD_FIRSTHOTSPOT_H

#include <QtCore/QJsonObject>

namespace morvek {

/*! The profile of a hotspot that nobody has set up yet. */
namespace FirstHotspot {

/*! Named after the machine, with a passphrase that was never there before. */
QJsonObject profile(const QString &hostName);

} // namespace FirstHotspot

} // namespace morvek

#endif
