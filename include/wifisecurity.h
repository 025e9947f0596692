// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFISECURITY_H
#define MORVEK_WIFISECURITY_H

#include <QtCore/QFlags>
#include <QtCore/QMetaType>

namespace morvek {

/*! Pairwise ciphers of an access point. */
enum WifiCipher : int {
    WifiCipherNone = 0x1, //!< no cipher: open and WEP networks
    WifiCipherCcmp = 0x2,
    WifiCipherTkip = 0x4,
};

/*! How keys are negotiated. */
enum WifiKeyManagementType : int {
    WifiKeyManagementNone = 0x1, //!< not at all: open and WEP networks, and what WPS adds
    WifiKeyManagementPsk = 0x2,  //!< pre-shared key
    WifiKeyManagementEap = 0x4,  //!< enterprise authentication
};

/*! Security protocols of a network. */
enum WifiSecurityProtocol : int {
    WifiSecurityProtocolNone = 0x1, //!< none, or none that is known
    WifiSecurityProtocolWep = 0x2,
    WifiSecurityProtocolWpa = 0x4,
    WifiSecurityProtocolWpa2 = 0x8,
    WifiSecurityProtocolWps = 0x10, //!< the access point offers WPS
};

/*! Kind of service set. */
enum WifiServiceSet : int {
    WifiServiceSetEss = 1,  //!< infrastructure network
    WifiServiceSetIbss = 2, //!< anything else
};

Q_DECLARE_OPERATORS_FOR_FLAGS(QFlags<WifiCipher>)
Q_DECLARE_OPERATORS_FOR_FLAGS(QFlags<WifiKeyManagementType>)
Q_DECLARE_OPERATORS_FOR_FLAGS(QFlags<WifiSecurityProtocol>)

} // namespace morvek

Q_DECLARE_METATYPE(morvek::WifiCipher)
Q_DECLARE_METATYPE(morvek::WifiKeyManagementType)
Q_DECLARE_METATYPE(morvek::WifiSecurityProtocol)
Q_DECLARE_METATYPE(morvek::WifiServiceSet)
Q_DECLARE_METATYPE(QFlags<morvek::WifiCipher>)
Q_DECLARE_METATYPE(QFlags<morvek::WifiKeyManagementType>)
Q_DECLARE_METATYPE(QFlags<morvek::WifiSecurityProtocol>)

#endif
