// SPDX-License-Identifier: Apache-2.0
#include "networksecurity.h"

#include <wifiaccesspoint.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QRegularExpression>

#include <algorithm>

namespace morvek {

namespace {

enum Part : unsigned {
    Wep = 0x1,
    Wpa = 0x2,
    Wpa2 = 0x4,
    Wpa3 = 0x8,
    Owe = 0x10,
    WpaEnterprise = 0x20,
    Wpa2Enterprise = 0x40,
    Wpa3Enterprise = 0x80,
    Kinds = 0xff,
    UnknownKind = 0x100, //!< it is protected, nobody knows how
    Wps = 0x200,         //!< a way to hand out the passkey, and no protection
    NotTold = 0x400,
};

/*! The names of those of \a kinds that \a parts holds, as "WPA/WPA2". */
QString joined(unsigned parts, std::initializer_list<std::pair<unsigned, QLatin1String>> kinds)
{
    QStringList names;
    for (const auto &[kind, name] : kinds) {
        if (parts & kind)
            names += name;
    }
    return names.join(QLatin1Char('/'));
}

bool startsWithAny(const QStringList &words, std::initializer_list<QLatin1String> beginnings)
{
    return std::any_of(words.begin(), words.end(), [&](const QString &word) {
        return std::any_of(beginnings.begin(), beginnings.end(),
                           [&](QLatin1String beginning) { return word.startsWith(beginning); });
    });
}

/*! What one of the daemon's flags tells. */
unsigned partsOf(const QString &flag)
{
    static const QRegularExpression separator(QStringLiteral("[^A-Z0-9.]+"));
    const QStringList words = flag.toUpper().split(separator, Qt::SkipEmptyParts);
    const bool psk = words.contains(QLatin1String("PSK"));
    const bool eap = startsWithAny(words, {QLatin1String("EAP"), QLatin1String("802.1X"), QLatin1String("8021X")});
    const bool wpa = words.contains(QLatin1String("WPA"));
    const bool wpa2 = words.contains(QLatin1String("WPA2")) || words.contains(QLatin1String("RSN"));
    const bool wpa3 = words.contains(QLatin1String("WPA3"));

    const auto part = [](bool told, unsigned name) { return told ? name : 0; };
    const unsigned parts = part(words.contains(QLatin1String("WEP")), Wep) | part(wpa && psk, Wpa)
        | part(wpa2 && psk, Wpa2)
        // whatever its keys are called
        | part((wpa3 && !eap) || words.contains(QLatin1String("SAE")), Wpa3)
        | part(words.contains(QLatin1String("OWE")), Owe) | part(wpa && eap, WpaEnterprise)
        | part(wpa2 && eap, Wpa2Enterprise) | part(wpa3 && eap, Wpa3Enterprise);
    if (parts != 0)
        return parts;
    // A protocol without keys, keys or a cipher without a protocol; and other families.
    const bool isProtection = psk || eap
        || startsWithAny(words,
                         {QLatin1String("WPA"), QLatin1String("RSN"), QLatin1String("WEP"), QLatin1String("TKIP"),
                          QLatin1String("CCMP"), QLatin1String("GCMP"), QLatin1String("WAPI"), QLatin1String("OSEN")});
    if (isProtection)
        return UnknownKind;
    return words.contains(QLatin1String("WPS")) ? unsigned(Wps) : 0;
}

/*! The names of all kinds of protection that \a parts holds. */
QString kindsOf(unsigned parts)
{
    QString personal = joined(parts,
                              {{Wep, QLatin1String("WEP")},
                               {Wpa, QLatin1String("WPA")},
                               {Wpa2, QLatin1String("WPA2")},
                               {Wpa3, QLatin1String("WPA3")},
                               {Owe, QLatin1String("OWE")}});
    const QString enterprise = joined(parts,
                                      {{WpaEnterprise, QLatin1String("WPA")},
                                       {Wpa2Enterprise, QLatin1String("WPA2")},
                                       {Wpa3Enterprise, QLatin1String("WPA3")}});
    if (enterprise.isEmpty())
        return personal;
    if (personal.isEmpty())
        return enterprise + QLatin1String(" Enterprise");
    return personal + QLatin1String(" + ") + (enterprise == personal ? QString() : enterprise + QLatin1Char(' '))
        + QLatin1String("Enterprise");
}

} // namespace

NetworkSecurity::NetworkSecurity()
    : m_parts(NotTold)
{
}

NetworkSecurity::NetworkSecurity(const WifiAccessPoint &accessPoint)
    : m_parts(0)
{
    const auto protocols = accessPoint.securityProtocols();
    const auto keys = accessPoint.keyManagementTypes();
    for (const auto &[protocol, personal, enterprise] :
         {std::make_tuple(WifiSecurityProtocolWpa, Wpa, WpaEnterprise),
          std::make_tuple(WifiSecurityProtocolWpa2, Wpa2, Wpa2Enterprise)}) {
        if (protocols.testFlag(protocol) && keys.testFlag(WifiKeyManagementPsk))
            m_parts |= personal;
        if (protocols.testFlag(protocol) && keys.testFlag(WifiKeyManagementEap))
            m_parts |= enterprise;
    }
    if (protocols.testFlag(WifiSecurityProtocolWep))
        m_parts |= Wep;
    const bool looksOpen = protocols == WifiSecurityProtocolNone && keys == WifiKeyManagementNone
        && accessPoint.ciphers() == WifiCipherNone;
    if (!isKnown() && !looksOpen)
        m_parts |= NotTold;
    if (protocols.testFlag(WifiSecurityProtocolWps))
        m_parts |= Wps;
}

NetworkSecurity::NetworkSecurity(const QStringList &flags)
    : m_parts(0)
{
    for (const QString &flag : flags)
        m_parts |= partsOf(flag);
}

NetworkSecurity NetworkSecurity::operator|(NetworkSecurity other) const
{
    other.m_parts |= m_parts;
    return other;
}

bool NetworkSecurity::isOpen() const
{
    return (m_parts & ~unsigned(Wps)) == 0;
}

bool NetworkSecurity::isKnown() const
{
    return (m_parts & Kinds) != 0;
}

bool NetworkSecurity::takesPasskey() const
{
    return (m_parts & (Wpa | Wpa2)) != 0;
}

bool NetworkSecurity::hasWpa2() const
{
    return (m_parts & Wpa2) != 0;
}

QString NetworkSecurity::name() const
{
    QString name = kindsOf(m_parts);
    if (isOpen())
        name = QCoreApplication::translate("morvek::NetworkSecurity", "open");
    else if (name.isEmpty())
        name = m_parts & UnknownKind ? QCoreApplication::translate("morvek::NetworkSecurity", "unknown protection")
                                     : QCoreApplication::translate("morvek::NetworkSecurity", "unknown");
    return m_parts & Wps ? name + QLatin1String(" + WPS") : name;
}

} // namespace morvek
