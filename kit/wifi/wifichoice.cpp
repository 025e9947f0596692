// SPDX-License-Identifier: Apache-2.0
#include "wifichoice.h"

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
    const WifiAccessPoint *strongest = nullptr;
    const WifiAccessPoint *open = nullptr;
    bool hasProtected = false;
    for (const WifiAccessPoint &one : accessPoints) {
        if (one.ssid() != ssid)
            continue;
        const NetworkSecurity its = published.ofScanned(one);
        if (its.isOpen()) {
            if (!open || isStronger(one.rssi(), open->rssi()))
                open = &one;
            continue;
        }
        if (its.takesPasskey() && (!strongest || isStronger(one.rssi(), strongest->rssi()))) {
            strongest = &one;
            security = its;
        } else if (!strongest) {
            security = hasProtected ? security | its : its;
        }
        hasProtected = true;
    }
    hasOpenTwin = open && hasProtected;
    if (strongest) {
        outcome = withPasskey ? Joinable : NeedsPasskey;
        accessPoint = *strongest;
    } else if (hasProtected) {
        outcome = Unsupported;
    } else if (open) {
        outcome = withPasskey ? TakesNone : Joinable;
        accessPoint = *open;
        security = published.ofScanned(*open);
    }
}

} // namespace morvek
