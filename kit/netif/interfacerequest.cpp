// SPDX-License-Identifier: Apache-2.0
#include "interfacerequest_p.h"

#include "wifinetworkmodel.h"

namespace morvek {

namespace {

// In milliseconds. A lease may take its time.
constexpr int ConfigurationTime = 40000;
constexpr int RepairTime = 60000;

/*! \a name as sentences tell it. */
QString shown(const QString &name)
{
    constexpr int MostCharacters = 24;
    return WifiNetworkModel::displayName(name.size() > MostCharacters ? name.left(MostCharacters - 1) + QChar(0x2026)
                                                                      : name);
}

bool lacksAddress(const NetworkInterface &networkInterface)
{
    return networkInterface.configuration().ipAddresses().isEmpty();
}

bool isAutomatic(const NetworkInterface &networkInterface)
{
    return networkInterface.configuration().type() == NetworkInterfaceConfig::Auto;
}

/*!
 * An address that means nothing beyond its own cable: machines without DHCP choose theirs like that. No machine has
 * that of the router, for 169.254.0 is set aside.
 */
NetworkInterfaceConfig linkLocal(const NetworkInterface &networkInterface)
{
    const QByteArray seed = (networkInterface.macAddress() + networkInterface.name()).toUtf8();
    const quint32 choice = qChecksum(seed.constData(), uint(seed.size())) % (254 * 256);
    QNetworkAddressEntry address;
    address.setIp(QHostAddress(0xa9fe0100u + choice)); // 169.254.1.0 to 169.254.254.255
    address.setNetmask(QHostAddress(0xffff0000u));
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::Manual);
    config.addIpAddress(address);
    config.addGatewayAddress(QHostAddress(0xa9fe0001u));
    return config;
}

} // namespace

InterfaceRequest::InterfaceRequest(NetworkController *controller, const QString &name, int deadline)
    : NetworkRequest(controller, name, deadline),
      m_services(controller->services())
{
}

InterfaceRequest::~InterfaceRequest()
{
    if (m_change && !hasEnded())
        m_change->abandon();
}

void InterfaceRequest::start()
{
    const QString name = subject();
    if (InterfaceChange::isAwaited(m_services, name)) {
        fail(Busy, tr("%1 is being changed already.").arg(shown(name)));
        return;
    }
    auto change = std::make_unique<InterfaceChange>(m_services, name);
    const NetworkInterface now = change->present();
    const QString reason = now.isEmpty() ? tr("%1 is not there.").arg(shown(name)) : objection(now);
    if (!reason.isEmpty()) {
        fail(Invalid, reason);
        return;
    }
    m_change = change.release();
    connect(m_change, &InterfaceChange::ended, this, &InterfaceRequest::onEnded);
    m_change->begin(configs(now));
}

QString InterfaceRequest::giveUp(Failure why)
{
    if (!m_change)
        return QString();
    const QString name = shown(subject());
    switch (why) {
    case Cancelled:
        return cancelText(m_change->step(), name);
    case TimedOut:
        return timeOutText(name);
    default:
        return tr("The network service has stopped. %1 may be without an address.").arg(name);
    }
}

void InterfaceRequest::release()
{
    if (m_change)
        m_change->abandon();
}

void InterfaceRequest::onEnded(InterfaceChange::End end, int code, const QString &text)
{
    const QString name = shown(subject());
    switch (end) {
    case InterfaceChange::Applied:
        succeed();
        return;
    case InterfaceChange::Refused: {
        const QString refused = tr("%1 was refused its new settings.").arg(name);
        const bool isStranded = lacksAddress(m_change->present());
        fail(Refused, isStranded ? refused + QLatin1Char(' ') + tr("It has no address now.") : refused, code, text);
        return;
    }
    case InterfaceChange::Overtaken:
        fail(Overtaken, tr("%1 has other settings now: they were changed meanwhile.").arg(name));
        return;
    case InterfaceChange::Vanished:
        fail(Lost, tr("%1 is not there any more.").arg(name), code, text);
        return;
    case InterfaceChange::Died:
        fail(Lost, giveUp(Lost), code, text);
        return;
    }
}

QString InterfaceRequest::timeOutText(const QString &name) const
{
    const NetworkInterface now = m_change->present();
    switch (m_change->step()) {
    case InterfaceChange::Releasing:
        return tr("%1 has not let go of its address in time. It may still get the new settings.").arg(name);
    case InterfaceChange::Asked:
        return tr("%1 waits for the network service, which has not answered in time.").arg(name);
    case InterfaceChange::Accepted:
        break;
    }
    if (!now.available())
        return tr("%1 has no link. It gets its address when it has one again.").arg(name);
    return isAutomatic(now) && lacksAddress(now)
        ? tr("%1 has got no address: no network has answered it.").arg(name)
        : tr("%1 has its new settings, but has not connected in time.").arg(name);
}

InterfaceConfiguration::InterfaceConfiguration(NetworkController *controller, const QString &name,
                                               const NetworkInterfaceConfig &config, const QString &objection)
    : InterfaceRequest(controller, name, ConfigurationTime),
      m_config(config),
      m_objection(objection)
{
}

InterfaceConfiguration::~InterfaceConfiguration() = default;

QString InterfaceConfiguration::objection(const NetworkInterface & /*networkInterface*/) const
{
    return m_objection;
}

QVector<NetworkInterfaceConfig> InterfaceConfiguration::configs(const NetworkInterface & /*networkInterface*/) const
{
    return {m_config};
}

QString InterfaceConfiguration::cancelText(InterfaceChange::Step step, const QString &name) const
{
    switch (step) {
    case InterfaceChange::Releasing:
        return tr("Cancelled. %1 may still lose its address, and get the new settings.").arg(name);
    case InterfaceChange::Asked:
        return tr("Cancelled. %1 may still get the new settings.").arg(name);
    case InterfaceChange::Accepted:
        break;
    }
    return tr("Cancelled. %1 may still connect with the new settings.").arg(name);
}

InterfaceRepair::InterfaceRepair(NetworkController *controller, const QString &name)
    : InterfaceRequest(controller, name, RepairTime)
{
}

InterfaceRepair::~InterfaceRepair() = default;

QString InterfaceRepair::objection(const NetworkInterface &networkInterface) const
{
    const QString name = shown(networkInterface.name());
    if (!isAutomatic(networkInterface) || !lacksAddress(networkInterface))
        return tr("%1 does not wait for an address.").arg(name);
    return networkInterface.available() ? QString() : tr("%1 has no link.").arg(name);
}

QVector<NetworkInterfaceConfig> InterfaceRepair::configs(const NetworkInterface &networkInterface) const
{
    return {linkLocal(networkInterface), NetworkInterfaceConfig()};
}

QString InterfaceRepair::cancelText(InterfaceChange::Step /*step*/, const QString &name) const
{
    return tr("Cancelled. %1 may still get an address.").arg(name);
}

} // namespace morvek
