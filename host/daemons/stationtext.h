// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_STATIONTEXT_H
#define MORVEK_HOSTD_STATIONTEXT_H

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace morvek {

/*! Writes what the status object of the Wi-Fi station holds, whatever radio it tells of. */
namespace StationText {

// Events. The words end with a blank.
inline const QString ScanStarted = QStringLiteral("CTRL-EVENT-SCAN-STARTED ");
inline const QString ScanFinished = QStringLiteral("CTRL-EVENT-SCAN-RESULTS ");
inline const QString NetworkNotFound = QStringLiteral("CTRL-EVENT-NETWORK-NOT-FOUND ");

// Reasons for which a connection ends: the station leaves by itself, or it hears its access point no more.
constexpr int LeftByItself = 3;
constexpr int LostFromSight = 4;

QString connectedEvent(const QString &bssid, int identifier);
QString disconnectedEvent(const QString &bssid, int reason);
QString wrongKeyEvent(int identifier, const QString &ssid);

QString power(bool on);
/*! An access point in "scan_results"; \a level in dBm, \a frequency in MHz. */
QJsonObject scanResult(const QString &bssid, const QString &ssid, int level, int frequency, const QStringList &flags);
/*! "scan_results": text, unlike all other JSON of the daemons. */
QString scanResults(const QJsonArray &results);
/*! "wifi_status" of a station that is connected. */
QJsonObject status(const QString &bssid, const QString &ssid, const QString &keyManagement, const QString &cipher);

} // namespace StationText

} // namespace morvek

#endif
