// SPDX-License-Identifier: Apache-2.0
#include "hotspotfields_p.h"

#include <utility>

namespace morvek {

namespace {

struct Access
{
    HotspotFields::Field field;
    bool (*isSame)(const WifiHotspot &left, const WifiHotspot &right);
    void (*copy)(const WifiHotspot &from, WifiHotspot *to);
};

template<auto get, auto set>
constexpr Access access(HotspotFields::Field field)
{
    return {field, [](const WifiHotspot &left, const WifiHotspot &right) { return (left.*get)() == (right.*get)(); },
            [](const WifiHotspot &from, WifiHotspot *to) { (to->*set)((from.*get)()); }};
}

constexpr Access Accesses[] = {
    access<&WifiHotspot::name, &WifiHotspot::setName>(HotspotFields::Name),
    access<&WifiHotspot::securityType, &WifiHotspot::setSecurityType>(HotspotFields::Security),
    access<&WifiHotspot::band, &WifiHotspot::setBand>(HotspotFields::Band),
    access<&WifiHotspot::maxClients, &WifiHotspot::setMaxClients>(HotspotFields::MaxClients),
    access<&WifiHotspot::inactivityTime, &WifiHotspot::setInactivityTime>(HotspotFields::InactivityTime),
    access<&WifiHotspot::privacy, &WifiHotspot::setPrivacy>(HotspotFields::Privacy),
    access<&WifiHotspot::blockConn, &WifiHotspot::setBlockConn>(HotspotFields::BlockConnections),
};

/*! Copies those of \a fields. */
void copyFields(unsigned fields, const WifiHotspot &from, WifiHotspot *to)
{
    for (const Access &access : Accesses) {
        if (fields & access.field)
            access.copy(from, to);
    }
}

} // namespace

HotspotFields HotspotFields::copy() const
{
    HotspotFields copy;
    copy.m_read = m_read.copy();
    copy.m_values = m_values;
    copy.m_passphrase = m_passphrase.copy();
    copy.m_edited = m_edited;
    copy.m_isRead = m_isRead;
    return copy;
}

void HotspotFields::read(KeptProfile profile)
{
    m_read = std::move(profile);
    m_isRead = true;
    copyFields(~m_edited, m_read.fields, &m_values);
    // It is not needed, and would never be written.
    if (isOpen() && faultOf(m_passphrase) != PasskeyFault::None)
        editPassphrase(Secret());
    forgetWhatWasRead();
}

void HotspotFields::edit(Field field, const WifiHotspot &values)
{
    copyFields(field, values, &m_values);
    m_edited |= field;
    forgetWhatWasRead();
}

void HotspotFields::editPassphrase(Secret passphrase)
{
    m_passphrase = std::move(passphrase);
    m_edited = m_passphrase.isEmpty() ? m_edited & ~Passphrase : m_edited | Passphrase;
    forgetWhatWasRead();
}

void HotspotFields::revert()
{
    m_values = m_read.fields;
    m_passphrase.clear();
    m_edited = 0;
}

void HotspotFields::forgetWhatWasRead()
{
    if (!m_isRead)
        return;
    for (const Access &access : Accesses) {
        if (access.isSame(m_values, m_read.fields))
            m_edited &= ~unsigned(access.field);
    }
    if (m_passphrase == m_read.passphrase)
        m_passphrase.clear();
    if (m_passphrase.isEmpty())
        m_edited &= ~unsigned(Passphrase);
}

bool HotspotFields::isOpen() const
{
    return m_values.securityType() == WifiSecurityProtocolNone;
}

PasskeyFault HotspotFields::passphraseFault() const
{
    if (isOpen())
        return PasskeyFault::None;
    return faultOf(m_edited & Passphrase ? m_passphrase : m_read.passphrase);
}

KeptProfile HotspotFields::applied(KeptProfile profile) const
{
    copyFields(m_edited, m_values, &profile.fields);
    if (m_edited & Passphrase && faultOf(m_passphrase) == PasskeyFault::None)
        profile.passphrase = m_passphrase.copy();
    return profile;
}

} // namespace morvek
