// SPDX-License-Identifier: Apache-2.0
#include "networkchoice.h"

#include "accesspointtext.h"
#include "texts.h"

#include <algorithm>

namespace morvek {

namespace {

const QLatin1String LibraryJoins("; this unit's library joins WPA and WPA2 with a passkey, and open networks");

template<typename Network, typename Text>
QString distinct(const QList<Network> &networks, Text text)
{
    QStringList texts;
    for (const Network &network : networks)
        texts += text(network);
    texts.removeAll(QString());
    texts.removeDuplicates();
    return shortList(texts);
}

NetworkChoice refuse(ExitCode code, const QString &complaint)
{
    NetworkChoice choice;
    choice.code = code;
    choice.complaint = complaint;
    return choice;
}

NetworkChoice refuseUnknown(const QList<WifiAccessPoint> &accessPoints, const QString &ssid)
{
    const QString known = distinct(accessPoints, [](const WifiAccessPoint &accessPoint) {
        return accessPoint.ssid().isEmpty() ? QString() : quoted(accessPoint.ssid());
    });
    return refuse(NotFound,
                  QStringLiteral("there is no network %1 in range: ").arg(quoted(ssid))
                      + (known.isEmpty() ? QStringLiteral("there is none at all at the moment")
                                         : QStringLiteral("use one of ") + known));
}

} // namespace

QString openTwinLeftOut()
{
    return QStringLiteral("; the open one of that name is not taken for it");
}

NetworkChoice chooseNetwork(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &published,
                            const QString &ssid, bool withPasskey)
{
    QList<NetworkChoice> named;
    int openOnes = 0;
    for (const WifiAccessPoint &accessPoint : accessPoints) {
        if (accessPoint.ssid() != ssid)
            continue;
        NetworkChoice choice;
        choice.accessPoint = accessPoint;
        choice.security = published.ofScanned(accessPoint);
        openOnes += choice.security.isOpen();
        named += choice;
    }
    if (named.isEmpty())
        return refuseUnknown(accessPoints, ssid);

    const bool allOpen = openOnes == named.size();
    const auto best = std::find_if(named.begin(), named.end(), [allOpen](const NetworkChoice &choice) {
        return allOpen || choice.security.takesPasskey();
    });
    if (best == named.end()) {
        const QString security = distinct(named, [](const NetworkChoice &choice) {
            return choice.security.isOpen() ? QString() : choice.security.name();
        });
        return refuse(Failed,
                      QStringLiteral("%1 cannot be joined: its security is %2").arg(quoted(ssid), security)
                          + LibraryJoins + (openOnes > 0 ? openTwinLeftOut() : QString()));
    }
    if (allOpen && withPasskey)
        return refuse(
            Failed,
            QStringLiteral("%1 is open: leave --passkey-file out to join it without protection").arg(quoted(ssid)));
    best->hasOpenTwin = !allOpen && openOnes > 0;
    return *best;
}

} // namespace morvek
