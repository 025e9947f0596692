// SPDX-License-Identifier: Apache-2.0
#include "keptprofile_p.h"

#include <utility>

namespace morvek {

namespace {

// What stands for no passphrase in the profile of an open network: the library writes none without one. It is too short
// for a protected network, so that no daemon ever takes it for a passphrase.
const QLatin1String NoPassphrase("none");

} // namespace

KeptProfile::KeptProfile(WifiHotspot profile)
{
    if (profile.passphrase() != NoPassphrase)
        passphrase = Secret(profile.passphrase());
    wipe(&profile);
    fields = std::move(profile);
}

KeptProfile KeptProfile::copy() const
{
    KeptProfile copy;
    copy.fields = fields;
    copy.passphrase = passphrase.copy();
    return copy;
}

WifiHotspot KeptProfile::whole() const
{
    WifiHotspot profile = fields;
    const bool isOpen = profile.securityType() == WifiSecurityProtocolNone;
    profile.setPassphrase(passphrase.isEmpty() && isOpen ? NoPassphrase : passphrase.text());
    return profile;
}

void KeptProfile::wipe(WifiHotspot *profile)
{
    QString passphrase = profile->passphrase();
    profile->setPassphrase(QString());
    Secret::wipe(&passphrase);
}

} // namespace morvek
