// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SCANFLAGSREADER_P_H
#define MORVEK_SCANFLAGSREADER_P_H

#include "wifisecurity.h"

#include <QtCore/QCborArray>

#include <utility>
#include <vector>

namespace morvek {

struct ScannedSecurity
{
    QFlags<WifiSecurityProtocol> protocols;
    QFlags<WifiKeyManagementType> keyManagement;
    QFlags<WifiCipher> ciphers;
    WifiServiceSet serviceSet = WifiServiceSetIbss;
};

/*!
 * Reads the flags of scans' results: the same ones once only, unless there is something to log in them. What one scan
 * has found the next one finds again, as a rule.
 */
class ScanFlagsReader
{
public:
    /*! Makes room for what a scan finds, if there is none. */
    void beginScan();
    ScannedSecurity read(const QCborArray &flags);

private:
    using Known = std::pair<QCborArray, ScannedSecurity>;

    std::vector<Known> m_known;
};

} // namespace morvek

#endif
