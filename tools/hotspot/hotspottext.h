// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTTEXT_H
#define MORVEK_HOTSPOTTEXT_H

#include "table.h"

#include <wifihotspot.h>

#include <QtCore/QJsonObject>
#include <QtCore/QStringList>
#include <QtCore/QVector>

namespace morvek {

/*! "2.4" or "5". */
QString bandWord(WifiBand band);
/*! False when \a word is none. */
bool readBand(const QString &word, WifiBand *band);

/*! "open", "WPA", "WPA2" or "WPA/WPA2"; "unknown" for what the library cannot read, nor write again. */
QString securityText(const QFlags<WifiSecurityProtocol> &security);
/*! Reads it in letters of any size, and with a hyphen. False when \a text is none, or "unknown". */
bool readSecurity(QString text, QFlags<WifiSecurityProtocol> *security);

/*! Why the library cannot write \a profile as it is, as "no name, no passphrase" or "an unknown security"; or empty. */
QString gapOf(const WifiHotspot &profile);
/*! The fields in which \a profile and \a other differ. */
QStringList differentFields(const WifiHotspot &profile, const WifiHotspot &other);

/*! The rows of a table; the passphrase is told only when \a withPassphrase is set. */
Table profileRows(const WifiHotspot &profile, bool withPassphrase = false);
QJsonObject toJson(const WifiHotspot &profile, bool withPassphrase = false);
/*! The most important of it, on one line. */
QString shortText(const WifiHotspot &profile);

} // namespace morvek

#endif
