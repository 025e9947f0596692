// SPDX-License-Identifier: Apache-2.0
#include "accesspointtext.h"

#include "gobject.h"
#include "wirenames.h"

namespace morvek {

namespace {

constexpr quint32 Eap = NM_802_11_AP_SEC_KEY_MGMT_802_1X | NM_802_11_AP_SEC_KEY_MGMT_EAP_SUITE_B_192;
constexpr quint32 Psk = NM_802_11_AP_SEC_KEY_MGMT_PSK;
constexpr quint32 Sae = NM_802_11_AP_SEC_KEY_MGMT_SAE;
constexpr quint32 Owe = NM_802_11_AP_SEC_KEY_MGMT_OWE;
constexpr quint32 OweBeside = NM_802_11_AP_SEC_KEY_MGMT_OWE_TM; // an open network with a protected twin
constexpr quint32 TkipCipher = NM_802_11_AP_SEC_PAIR_TKIP;
constexpr quint32 CcmpCipher = NM_802_11_AP_SEC_PAIR_CCMP;
constexpr quint32 AllProtection = Eap | Psk | Sae | Owe;

// Of the range that the manager shows as 0 to 100 percent.
constexpr double StrongestLevel = -40;
constexpr double LevelsOfAPercent = 0.6;

const struct
{
    quint32 bits;
    QLatin1String word;
} KeyManagements[] = {
    {Psk, QLatin1String("PSK")},
    {Eap, QLatin1String("EAP")},
    {Sae, QLatin1String("SAE")},
    {Owe, QLatin1String("OWE")},
};

/*! The manager knows no other ciphers than the two. What it keeps silent about is of today's family. */
QString ciphersOf(quint32 bits)
{
    QStringList ciphers;
    if (bits & TkipCipher)
        ciphers += Wire::Tkip;
    if (bits & CcmpCipher)
        ciphers += Wire::Ccmp;
    return ciphers.isEmpty() ? QStringLiteral("GCMP") : ciphers.join(QLatin1Char('+'));
}

QStringList protectionFlags(const QString &protocol, quint32 bits)
{
    QStringList flags;
    for (const auto &one : KeyManagements) {
        if (bits & one.bits)
            flags += protocol + QLatin1Char('-') + one.word + QLatin1Char('-') + ciphersOf(bits);
    }
    return flags;
}

bool isWep(const AccessPointSecurity &security)
{
    return (security.flags & NM_802_11_AP_FLAGS_PRIVACY) && !((security.wpa | security.rsn) & AllProtection);
}

} // namespace

QStringList AccessPointText::flags(const AccessPointSecurity &security, bool infrastructure)
{
    QStringList flags =
        protectionFlags(QStringLiteral("WPA"), security.wpa) + protectionFlags(QStringLiteral("WPA2"), security.rsn);
    if (isWep(security))
        flags += QStringLiteral("WEP");
    if ((security.wpa | security.rsn) & OweBeside)
        flags += QStringLiteral("OWE-TRANS");
    if (security.flags & NM_802_11_AP_FLAGS_WPS)
        flags += QStringLiteral("WPS");
    if (infrastructure)
        flags += QStringLiteral("ESS");
    return flags;
}

QString AccessPointText::keyManagement(const AccessPointSecurity &security)
{
    if (security.rsn & Psk)
        return Wire::Wpa2Psk;
    if (security.wpa & Psk)
        return Wire::WpaPsk;
    if (security.rsn & Sae)
        return Wire::Wpa3Sae;
    if (security.rsn & Eap)
        return QStringLiteral("WPA2-EAP");
    if (security.wpa & Eap)
        return QStringLiteral("WPA-EAP");
    return security.rsn & Owe ? QStringLiteral("OWE") : Wire::None;
}

QString AccessPointText::cipher(const AccessPointSecurity &security)
{
    if (!((security.wpa | security.rsn) & AllProtection))
        return Wire::None;
    // That of the key management which is told, and the better one of two.
    const bool older = keyManagement(security).startsWith(QLatin1String("WPA-"));
    return ciphersOf(older ? security.wpa : security.rsn).split(QLatin1Char('+')).constLast();
}

AccessPointText::Way AccessPointText::wayToJoin(const AccessPointSecurity &security, bool hasPasskey)
{
    const quint32 both = security.wpa | security.rsn;
    if (hasPasskey) {
        if (both & Psk)
            return Way::Psk;
        return both & Sae ? Way::Sae : Way::None;
    }
    if (both & (Owe | OweBeside))
        return Way::Owe;
    return both & AllProtection || isWep(security) ? Way::None : Way::Open;
}

int AccessPointText::level(int percent)
{
    return qRound(StrongestLevel - (100 - qBound(0, percent, 100)) * LevelsOfAPercent);
}

} // namespace morvek
