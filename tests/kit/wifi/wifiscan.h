// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFISCAN_H
#define MORVEK_WIFISCAN_H

#include "wifinetworkmodel.h"

/*! What the tests of the model of networks write down. */
namespace WifiScan {

using Found = morvek::WifiNetworkModel::Found;

inline morvek::NetworkSecurity security(const char *flag)
{
    return morvek::NetworkSecurity(QStringList(QString::fromLatin1(flag)));
}

const char Wpa2[] = "WPA2-PSK-CCMP";

inline Found accessPoint(const QString &ssid, int level, const char *flag = Wpa2)
{
    return {ssid, level, security(flag)};
}

/*! "A-50 B-61": the network A at -50 dBm, and so on. */
inline QVector<Found> scan(const QString &text)
{
    QVector<Found> found;
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &word : words)
        found.append(accessPoint(word.left(1), word.mid(1).toInt()));
    return found;
}

/*! The names, top down: "AB". */
inline QString order(const morvek::WifiNetworkModel &model)
{
    QString names;
    for (int row = 0; row < model.rowCount(); ++row)
        names += model.index(row).data(morvek::WifiNetworkModel::SsidRole).toString();
    return names;
}

} // namespace WifiScan

#endif
