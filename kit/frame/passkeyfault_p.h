// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PASSKEYFAULT_P_H
#define MORVEK_PASSKEYFAULT_P_H

namespace morvek {

class Secret;

/*! Why no network with WPA or WPA2 can have a passkey. */
enum class PasskeyFault {
    None,
    Missing,
    TooShort,     //!< less than 8 characters
    TooLong,      //!< more than 63 characters, and not the 64 hexadecimal digits of a key
    NotPrintable, //!< something else than printable ASCII characters in it
};

PasskeyFault faultOf(const Secret &passkey);

} // namespace morvek

#endif
