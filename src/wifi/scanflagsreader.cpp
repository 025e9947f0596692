// SPDX-License-Identifier: Apache-2.0
#include "scanflagsreader_p.h"

#include "wifiproviderzopparserutilities.h"

#include <QtCore/QJsonArray>

#include <algorithm>

namespace morvek {

namespace {

constexpr size_t MostKnown = 8; // they are looked through for each result

/*! Whether \a flags take little room: they are kept between scans. */
bool areSmall(const QCborArray &flags)
{
    constexpr int MostFlags = 16;
    constexpr int MostCharacters = 64;
    return flags.size() <= MostFlags && std::all_of(flags.begin(), flags.end(), [](const QCborValue &flag) {
               return flag.isString() && flag.toString().size() <= MostCharacters;
           });
}

} // namespace

void ScanFlagsReader::beginScan()
{
    if (m_known.size() == MostKnown)
        m_known.clear();
}

ScannedSecurity ScanFlagsReader::read(const QCborArray &flags)
{
    const auto known =
        std::find_if(m_known.begin(), m_known.end(), [&flags](const Known &one) { return one.first == flags; });
    if (known != m_known.end())
        return known->second;
    ScannedSecurity security;
    const bool isUnderstood = WifiProviderZopParserUtilities::parseScanResultFlags(
        flags.toJsonArray(), security.protocols, security.keyManagement, security.ciphers, security.serviceSet);
    if (isUnderstood && m_known.size() < MostKnown && areSmall(flags))
        m_known.emplace_back(flags, security);
    return security;
}

} // namespace morvek
