// SPDX-License-Identifier: Apache-2.0
#include "networkchoice.h"

#include "accesspointtext.h"
#include "texts.h"

#include <algorithm>

namespace morvek {

namespace {

template<typename Text>
QString distinct(const QList<WifiAccessPoint> &accessPoints, Text text)
{
    QStringList texts;
    for (const WifiAccessPoint &accessPoint : accessPoints)
        texts += text(accessPoint);
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

NetworkChoice chooseNetwork(const QList<WifiAccessPoint> &accessPoints, bool sureOfOpen, const QString &ssid,
                            bool withPasskey)
{
    QList<WifiAccessPoint> named;
    std::copy_if(accessPoints.begin(), accessPoints.end(), std::back_inserter(named),
                 [&](const WifiAccessPoint &accessPoint) { return accessPoint.ssid() == ssid; });
    if (named.isEmpty())
        return refuseUnknown(accessPoints, ssid);

    const int openOnes = int(std::count_if(named.begin(), named.end(), isOpen));
    const bool allOpen = openOnes == named.size();
    const auto protectedOne = std::find_if(named.begin(), named.end(), takesPasskey);
    if (protectedOne != named.end() || (allOpen && !withPasskey)) {
        NetworkChoice choice;
        choice.accessPoint = allOpen ? named.first() : *protectedOne;
        choice.hasOpenTwin = !allOpen && openOnes > 0;
        return choice;
    }
    const auto security = [sureOfOpen](const WifiAccessPoint &accessPoint) {
        return securityName(accessPoint, sureOfOpen);
    };
    if (allOpen)
        return refuse(Failed,
                      QStringLiteral("%1 is %2: leave --passkey-file out to join it without protection")
                          .arg(quoted(ssid), security(named.first())));
    return refuse(
        Failed, QStringLiteral("%1 cannot be joined: its security is ").arg(quoted(ssid)) + distinct(named, security));
}

} // namespace morvek
