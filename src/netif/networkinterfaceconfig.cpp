// SPDX-License-Identifier: Apache-2.0
#include "networkinterfaceconfig.h"

#include <QtCore/QStringList>
#include <QtCore/QTextStream>

namespace morvek {

class Q_DECL_HIDDEN NetworkInterfaceConfig::Private
{
public:
    ConfigurationType type = Auto;
    QList<QNetworkAddressEntry> ipAddresses;
    QList<QHostAddress> gatewayAddresses;
};

namespace {

QString text(const QNetworkAddressEntry &address)
{
    const QString ip = address.ip().toString();
    return address.netmask().isNull() ? ip : ip + QLatin1Char('/') + address.netmask().toString();
}

QString text(const QHostAddress &address)
{
    return address.toString();
}

template<typename Address>
void writeSection(QTextStream &stream, const char *label, const QList<Address> &addresses)
{
    if (addresses.isEmpty())
        return;
    QStringList texts;
    for (const Address &address : addresses)
        texts.append(text(address));
    stream << label << "[" << texts.join(QLatin1Char(',')) << "]";
}

} // namespace

NetworkInterfaceConfig::NetworkInterfaceConfig() = default;
NetworkInterfaceConfig::NetworkInterfaceConfig(const NetworkInterfaceConfig &other) = default;
NetworkInterfaceConfig::NetworkInterfaceConfig(NetworkInterfaceConfig &&other) noexcept = default;
NetworkInterfaceConfig::~NetworkInterfaceConfig() = default;
NetworkInterfaceConfig &NetworkInterfaceConfig::operator=(const NetworkInterfaceConfig &other) = default;
NetworkInterfaceConfig &NetworkInterfaceConfig::operator=(NetworkInterfaceConfig &&other) noexcept = default;

bool NetworkInterfaceConfig::operator==(const NetworkInterfaceConfig &other) const
{
    return d->type == other.d->type && d->ipAddresses == other.d->ipAddresses
        && d->gatewayAddresses == other.d->gatewayAddresses;
}

bool NetworkInterfaceConfig::operator!=(const NetworkInterfaceConfig &other) const
{
    return !(*this == other);
}

bool NetworkInterfaceConfig::isEmpty() const
{
    return d->type == Auto && d->ipAddresses.isEmpty() && d->gatewayAddresses.isEmpty();
}

NetworkInterfaceConfig::ConfigurationType NetworkInterfaceConfig::type() const
{
    return d->type;
}

void NetworkInterfaceConfig::setType(ConfigurationType type)
{
    d->type = type;
}

QList<QNetworkAddressEntry> NetworkInterfaceConfig::ipAddresses() const
{
    return d->ipAddresses;
}

void NetworkInterfaceConfig::setIpAddresses(const QList<QNetworkAddressEntry> &addresses)
{
    d->ipAddresses = addresses;
}

void NetworkInterfaceConfig::addIpAddress(const QNetworkAddressEntry &address)
{
    d->ipAddresses.append(address);
}

QList<QHostAddress> NetworkInterfaceConfig::gatewayAddresses() const
{
    return d->gatewayAddresses;
}

void NetworkInterfaceConfig::setGatewayAddresses(const QList<QHostAddress> &gateways)
{
    d->gatewayAddresses = gateways;
}

void NetworkInterfaceConfig::addGatewayAddress(const QHostAddress &gateway)
{
    d->gatewayAddresses.append(gateway);
}

// The sections follow one another without a separator: that is the format.
QTextStream &operator<<(QTextStream &stream, const NetworkInterfaceConfig &config)
{
    if (config.isEmpty())
        return stream << "NetworkInterfaceConfig{empty}";
    stream << "NetworkInterfaceConfig{type:" << (config.type() == NetworkInterfaceConfig::Auto ? "auto" : "manual");
    writeSection(stream, "ip:", config.ipAddresses());
    writeSection(stream, "gateways:", config.gatewayAddresses());
    return stream << "}";
}

} // namespace morvek
