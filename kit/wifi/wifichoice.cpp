// SPDX-License-Identifier: Apache-2.0
#include "wifichoice_p.h"

#include "publishedsecurity.h"

namespace morvek {

namespace {

/*! A level that is not known is 0, which would be the strongest. */
bool isStronger(int level, int other)
{
    return level != 0 && (other == 0 || level > other);
}

} // namespace

WifiChoice::WifiChoice(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &published,
                       const QString &ssid, bool withPasskey)
{
    bool hasOpen = false;
    bool hasProtected = false;
    const WifiAccessPoint *strongest = nullptr;
    NetworkSecurity ofStrongest;
    NetworkSecurity ofProtected;
    for (const WifiAccessPoint &accessPoint : accessPoints) {
        if (accessPoint.ssid() != ssid)
            continue;
        const NetworkSecurity its = published.ofScanned(accessPoint);
        if (its.isOpen()) {
            hasOpen = true;
            continue;
        }
        ofProtected = hasProtected ? ofProtected | its : its;
        hasProtected = true;
        if (its.takesPasskey() && (!strongest || isStronger(accessPoint.rssi(), strongest->rssi()))) {
            strongest = &accessPoint;
            ofStrongest = its;
        }
    }
    hasOpenTwin = hasOpen && hasProtected;
    security = strongest ? ofStrongest : hasProtected ? ofProtected : NetworkSecurity(QStringList());
    if (strongest)
        outcome = withPasskey ? Joinable : NeedsPasskey;
    else if (hasProtected)
        outcome = Unsupported;
    else if (hasOpen)
        outcome = withPasskey ? TakesNone : Joinable;
}

} // namespace morvek
