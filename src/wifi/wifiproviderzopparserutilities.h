// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFIPROVIDERZOPPARSERUTILITIES_H
#define MORVEK_WIFIPROVIDERZOPPARSERUTILITIES_H

#include "wifisecurity.h"

class QJsonArray;
class QString;

namespace morvek {

/*!
 * Reads what the Wi-Fi daemon says about the security of access points. What it does not know is logged and changes
 * nothing: as a warning in the status, as an error in scan results.
 */
class WifiProviderZopParserUtilities
{
public:
    /*! Overwrites both with what \a value, the "key_mgmt" of the present connection, names. */
    static void parseStatusKeyManagement(const QString &value, QFlags<WifiSecurityProtocol> &protocols,
                                         QFlags<WifiKeyManagementType> &keyManagement);
    /*! Overwrites \a ciphers with what \a value, the "pairwise_cipher" of the present connection, names. */
    static void parseStatusCipher(const QString &value, QFlags<WifiCipher> &ciphers);
    /*!
     * Adds what the \a flags of a scan result name to the three sets, which the caller has cleared, and sets
     * \a serviceSet. Flags that name no protocol are those of an open network. False when some were not understood,
     * whether that was logged or not.
     */
    static bool parseScanResultFlags(const QJsonArray &flags, QFlags<WifiSecurityProtocol> &protocols,
                                     QFlags<WifiKeyManagementType> &keyManagement, QFlags<WifiCipher> &ciphers,
                                     WifiServiceSet &serviceSet);
};

} // namespace morvek

#endif
