// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_KEPTPROFILE_P_H
#define MORVEK_KEPTPROFILE_P_H

#include "secret_p.h"

#include <wifihotspot.h>

namespace morvek {

/*! A profile of the hotspot with its passphrase kept apart, so that it can be wiped. */
class KeptProfile
{
public:
    KeptProfile() = default;
    explicit KeptProfile(WifiHotspot profile);

    bool operator==(const KeptProfile &other) const { return fields == other.fields && passphrase == other.passphrase; }
    bool operator!=(const KeptProfile &other) const { return !(*this == other); }

    KeptProfile copy() const;
    /*! With its passphrase, as the library takes it: wipe() it after use. */
    WifiHotspot whole() const;
    /*! Takes the passphrase out of \a profile, and wipes its memory where nobody else has a share in it. */
    static void wipe(WifiHotspot *profile);

    WifiHotspot fields; //!< without the passphrase
    Secret passphrase;  //!< empty when there is none
};

} // namespace morvek

#endif
