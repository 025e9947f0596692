// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PUBLISHEDLEVEL_H
#define MORVEK_PUBLISHEDLEVEL_H

#include <QtCore/QString>

namespace morvek {

/*!
 * The level of the access point \a bssid in dBm, as the last scan has found it: the library tells scans only to who has
 * asked for them. 0 when it is not known.
 */
int publishedLevel(const QString &bssid);

} // namespace morvek

#endif
