// SPDX-License-Identifier: Apache-2.0
#include "networkchoice.h"

#include "accesspointtext.h"
#include "texts.h"

#include <wifichoice.h>

namespace morvek {

namespace {

const QLatin1String LibraryJoins("; this unit's library joins WPA and WPA2 with a passkey, and open networks");

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

QString openTwinLeftOut()
{
    return QStringLiteral("; the open one of that name is not taken for it");
}

NetworkChoice chooseNetwork(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &published,
                            const QString &ssid, bool withPasskey)
{
    const WifiChoice choice(accessPoints, published, ssid, withPasskey);
    switch (choice.outcome) {
    case WifiChoice::NotInRange:
        return refuseUnknown(accessPoints, ssid);
    case WifiChoice::Unsupported: {
        const QString security = distinct(accessPoints, [&](const WifiAccessPoint &accessPoint) {
            const NetworkSecurity its = published.ofScanned(accessPoint);
            return accessPoint.ssid() != ssid || its.isOpen() ? QString() : its.name();
        });
        return refuse(Failed,
                      QStringLiteral("%1 cannot be joined: its security is %2").arg(quoted(ssid), security)
                          + LibraryJoins + (choice.hasOpenTwin ? openTwinLeftOut() : QString()));
    }
    case WifiChoice::TakesNone:
        return refuse(
            Failed,
            QStringLiteral("%1 is open: leave --passkey-file out to join it without protection").arg(quoted(ssid)));
    case WifiChoice::Joinable:
    case WifiChoice::NeedsPasskey:
        break;
    }
    return {choice.accessPoint, choice.security, choice.hasOpenTwin, QString(), Done};
}

} // namespace morvek
