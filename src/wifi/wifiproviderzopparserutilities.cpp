// SPDX-License-Identifier: Apache-2.0
#include "wifiproviderzopparserutilities.h"

#include "networklog_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QStringView>

namespace morvek {

namespace {

const char UnknownStatusKeyManagementText[] = "Unrecognized Wi-Fi status key management value: \"";
const char UnknownStatusCipherText[] = "Unrecognized Wi-Fi status cipher: \"";
const char UnreadableFlagText[] = "Unable to parse access point WPA flag \"";
const char UnknownProtocolText[] = "Unrecognized access point flag security protocol: \"";
const char UnknownKeyManagementText[] = "Unrecognized access point flag key management: \"";
const char UnknownCipherText[] = "Unrecognized access point cipher: \"";

template<typename Value>
struct Token
{
    QLatin1String text;
    Value value;
};

/*! The entry of \a table for \a text; null when there is none. */
template<typename Table>
auto find(const Table &table, QStringView text) -> decltype(&*std::begin(table))
{
    for (const auto &token : table) {
        if (text == token.text)
            return &token;
    }
    return nullptr;
}

struct Security
{
    WifiSecurityProtocol protocol;
    WifiKeyManagementType keyManagement;
};

const Token<Security> StatusKeyManagements[] = {
    {QLatin1String("NONE"), {WifiSecurityProtocolNone, WifiKeyManagementNone}},
    {QLatin1String("WPA-PSK"), {WifiSecurityProtocolWpa, WifiKeyManagementPsk}},
    {QLatin1String("WPA-EAP"), {WifiSecurityProtocolWpa, WifiKeyManagementEap}},
    {QLatin1String("WPA2-PSK"), {WifiSecurityProtocolWpa2, WifiKeyManagementPsk}},
    {QLatin1String("WPA2-EAP"), {WifiSecurityProtocolWpa2, WifiKeyManagementEap}},
};

const Token<WifiCipher> StatusCiphers[] = {
    {QLatin1String("NONE"), WifiCipherNone},
    {QLatin1String("TKIP"), WifiCipherTkip},
    {QLatin1String("CCMP"), WifiCipherCcmp},
};

const Token<WifiSecurityProtocol> FlagProtocols[] = {
    {QLatin1String("WPA"), WifiSecurityProtocolWpa},
    {QLatin1String("WPA2"), WifiSecurityProtocolWpa2},
};

const Token<WifiKeyManagementType> FlagKeyManagements[] = {
    {QLatin1String("PSK"), WifiKeyManagementPsk},
    {QLatin1String("EAP"), WifiKeyManagementEap},
};

const Token<QFlags<WifiCipher>> FlagCiphers[] = {
    {QLatin1String("TKIP"), WifiCipherTkip},
    {QLatin1String("CCMP"), WifiCipherCcmp},
    {QLatin1String("TKIP+CCMP"), WifiCipherTkip | WifiCipherCcmp},
};

/*! Adds what one part of a flag names to \a set; false when it names nothing. */
template<typename Table, typename Set>
bool addPart(const Table &table, QStringView part, const char *unknownText, Set &set)
{
    const auto *token = find(table, part);
    if (token)
        set |= token->value;
    else
        NetworkLog::printError(unknownText, part, '"');
    return token;
}

} // namespace

void WifiProviderZopParserUtilities::parseStatusKeyManagement(const QString &value,
                                                              QFlags<WifiSecurityProtocol> &protocols,
                                                              QFlags<WifiKeyManagementType> &keyManagement)
{
    const auto *token = find(StatusKeyManagements, value);
    if (!token) {
        NetworkLog::printWarning(UnknownStatusKeyManagementText, value, '"');
        return;
    }
    protocols = token->value.protocol;
    keyManagement = token->value.keyManagement;
}

void WifiProviderZopParserUtilities::parseStatusCipher(const QString &value, QFlags<WifiCipher> &ciphers)
{
    if (const auto *token = find(StatusCiphers, value))
        ciphers = token->value;
    else
        NetworkLog::printWarning(UnknownStatusCipherText, value, '"');
}

bool WifiProviderZopParserUtilities::parseScanResultFlags(const QJsonArray &flags,
                                                          QFlags<WifiSecurityProtocol> &protocols,
                                                          QFlags<WifiKeyManagementType> &keyManagement,
                                                          QFlags<WifiCipher> &ciphers, WifiServiceSet &serviceSet)
{
    serviceSet = WifiServiceSetIbss;
    bool isUnderstood = true;
    for (const QJsonValue &element : flags) {
        const QString flag = element.toString();
        if (flag == QLatin1String("ESS")) {
            serviceSet = WifiServiceSetEss;
        } else if (flag == QLatin1String("WPS")) {
            protocols |= WifiSecurityProtocolWps;
            keyManagement |= WifiKeyManagementNone;
            ciphers |= WifiCipherNone;
        } else if (flag == QLatin1String("WEP")) {
            protocols |= WifiSecurityProtocolWep;
            keyManagement |= WifiKeyManagementNone;
            ciphers |= WifiCipherNone;
        } else if (flag.startsWith(QLatin1String("WPA"))) {
            if (flag.count(QLatin1Char('-')) != 2) {
                NetworkLog::printError(UnreadableFlagText, flag, '"');
                isUnderstood = false;
                continue;
            }
            const QStringView text(flag);
            const int first = flag.indexOf(QLatin1Char('-'));
            const int last = flag.lastIndexOf(QLatin1Char('-'));
            isUnderstood &= addPart(FlagProtocols, text.left(first), UnknownProtocolText, protocols);
            isUnderstood &= addPart(FlagKeyManagements, text.mid(first + 1, last - first - 1), UnknownKeyManagementText,
                                    keyManagement);
            isUnderstood &= addPart(FlagCiphers, text.mid(last + 1), UnknownCipherText, ciphers);
        }
    }
    if (protocols == 0) {
        protocols = WifiSecurityProtocolNone;
        keyManagement |= WifiKeyManagementNone;
        ciphers |= WifiCipherNone;
    }
    return isUnderstood;
}

} // namespace morvek
