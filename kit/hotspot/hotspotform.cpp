// SPDX-License-Identifier: Apache-2.0
#include "hotspotform.h"

#include "hotspotform_p.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace morvek {

namespace {

constexpr int LongestName = 32; // bytes
constexpr int NotSet = -1;

const std::pair<HotspotForm::Security, QFlags<WifiSecurityProtocol>> Securities[] = {
    {HotspotForm::Open, WifiSecurityProtocolNone},
    {HotspotForm::Wpa, WifiSecurityProtocolWpa},
    {HotspotForm::Wpa2, WifiSecurityProtocolWpa2},
    {HotspotForm::WpaAndWpa2, WifiSecurityProtocolWpa | WifiSecurityProtocolWpa2},
};

/*! Whether each of the characters of \a name is one; some texts have halves of them, or what stands for none. */
bool isText(const QString &name)
{
    return name.isValidUtf16() && !name.contains(QChar::ReplacementCharacter);
}

} // namespace

template<typename Change>
void HotspotForm::Private::change(const Change &change)
{
    const auto shown = [this] { return std::make_tuple(fields.edited(), fields.passphraseFault(), fields.values()); };
    const auto before = shown();
    change();
    if (shown() != before)
        Q_EMIT q->changed();
}

template<typename Set>
void HotspotForm::Private::edit(HotspotFields::Field field, const Set &set)
{
    WifiHotspot values = fields.values();
    set(&values);
    change([&] { fields.edit(field, values); });
}

HotspotForm::HotspotForm(QObject *parent)
    : QObject(parent),
      d(new Private)
{
    d->q = this;
}

HotspotForm::~HotspotForm() = default;

QString HotspotForm::name() const
{
    return d->fields.values().name();
}

void HotspotForm::setName(const QString &name)
{
    d->edit(HotspotFields::Name, [&](WifiHotspot *values) { values->setName(name); });
}

HotspotForm::Security HotspotForm::security() const
{
    const QFlags<WifiSecurityProtocol> flags = d->fields.values().securityType();
    for (const auto &[security, known] : Securities) {
        if (known == flags)
            return security;
    }
    return UnknownSecurity;
}

void HotspotForm::setSecurity(Security security)
{
    QFlags<WifiSecurityProtocol> flags;
    for (const auto &[known, itsFlags] : Securities) {
        if (known == security)
            flags = itsFlags;
    }
    d->edit(HotspotFields::Security, [flags](WifiHotspot *values) { values->setSecurityType(flags); });
}

HotspotForm::Band HotspotForm::band() const
{
    return d->fields.values().band() == WifiBand5GHz ? Band5GHz : Band2_4GHz;
}

void HotspotForm::setBand(Band band)
{
    const WifiBand chosen = band == Band5GHz ? WifiBand5GHz : WifiBand2_4GHz;
    d->edit(HotspotFields::Band, [chosen](WifiHotspot *values) { values->setBand(chosen); });
}

int HotspotForm::maxClients() const
{
    return d->fields.values().maxClients();
}

void HotspotForm::setMaxClients(int maxClients)
{
    d->edit(HotspotFields::MaxClients, [maxClients](WifiHotspot *values) { values->setMaxClients(maxClients); });
}

int HotspotForm::inactivityTime() const
{
    return d->fields.values().inactivityTime();
}

void HotspotForm::setInactivityTime(int inactivityTime)
{
    d->edit(HotspotFields::InactivityTime,
            [inactivityTime](WifiHotspot *values) { values->setInactivityTime(inactivityTime); });
}

bool HotspotForm::privacy() const
{
    return d->fields.values().privacy();
}

void HotspotForm::setPrivacy(bool privacy)
{
    d->edit(HotspotFields::Privacy, [privacy](WifiHotspot *values) { values->setPrivacy(privacy); });
}

bool HotspotForm::blockConnections() const
{
    return d->fields.values().blockConn();
}

void HotspotForm::setBlockConnections(bool blockConnections)
{
    d->edit(HotspotFields::BlockConnections,
            [blockConnections](WifiHotspot *values) { values->setBlockConn(blockConnections); });
}

void HotspotForm::setPassphrase(const QString &passphrase)
{
    d->change([&] { d->fields.editPassphrase(Secret(passphrase)); });
}

bool HotspotForm::isPassphraseEdited() const
{
    return d->fields.edited() & HotspotFields::Passphrase;
}

HotspotForm::Fault HotspotForm::nameFault() const
{
    const QString name = this->name();
    if (name.isEmpty())
        return Missing;
    if (!isText(name))
        return NotPrintable;
    return name.toUtf8().size() > LongestName ? TooLong : NoFault;
}

HotspotForm::Fault HotspotForm::passphraseFault() const
{
    switch (d->fields.passphraseFault()) {
    case PasskeyFault::Missing:
        return Missing;
    case PasskeyFault::TooShort:
        return TooShort;
    case PasskeyFault::TooLong:
        return TooLong;
    case PasskeyFault::NotPrintable:
        return NotPrintable;
    case PasskeyFault::None:
        break;
    }
    return NoFault;
}

HotspotForm::Fault HotspotForm::securityFault() const
{
    return security() == UnknownSecurity ? NotSelectable : NoFault;
}

HotspotForm::Fault HotspotForm::maxClientsFault() const
{
    if (maxClients() == NotSet && !(d->fields.edited() & HotspotFields::MaxClients))
        return Missing;
    return maxClients() < 1 ? OutOfRange : NoFault;
}

HotspotForm::Fault HotspotForm::inactivityTimeFault() const
{
    if (inactivityTime() == NotSet && !(d->fields.edited() & HotspotFields::InactivityTime))
        return Missing;
    return inactivityTime() < 0 ? OutOfRange : NoFault;
}

QString HotspotForm::nameText() const
{
    switch (nameFault()) {
    case Missing:
        return tr("Enter a name.");
    case TooLong:
        return tr("The name is too long: 32 plain letters at most, fewer with accents or of other scripts.");
    case NotPrintable:
        return tr("The name has a character that cannot be used.");
    default:
        return QString();
    }
}

QString HotspotForm::passphraseText() const
{
    switch (passphraseFault()) {
    case Missing:
        return tr("Enter a passphrase.");
    case TooShort:
        return tr("The passphrase is too short: 8 characters at least.");
    case TooLong:
        return tr("The passphrase is too long: 63 characters at most.");
    case NotPrintable:
        return tr("The passphrase has a character that cannot be used: take plain letters, digits and signs.");
    default:
        return QString();
    }
}

QString HotspotForm::securityText() const
{
    return securityFault() == NoFault ? QString() : tr("Choose how the hotspot is protected.");
}

QString HotspotForm::maxClientsText() const
{
    return maxClientsFault() == NoFault ? QString() : tr("Enter how many devices may connect: 1 at least.");
}

QString HotspotForm::inactivityTimeText() const
{
    return inactivityTimeFault() == NoFault ? QString() : tr("Enter how long it stays on unused: 0 or more.");
}

bool HotspotForm::isValid() const
{
    const Fault faults[] = {nameFault(), passphraseFault(), securityFault(), maxClientsFault(), inactivityTimeFault()};
    return std::all_of(std::begin(faults), std::end(faults), [](Fault fault) { return fault == NoFault; });
}

bool HotspotForm::isEdited() const
{
    return d->fields.edited() != 0;
}

void HotspotForm::read(const WifiHotspot &profile)
{
    d->change([&] { d->fields.read(KeptProfile(profile)); });
}

void HotspotForm::revert()
{
    d->change([this] { d->fields.revert(); });
}

WifiHotspot HotspotForm::applied(const WifiHotspot &profile) const
{
    return d->fields.applied(KeptProfile(profile)).whole();
}

} // namespace morvek
