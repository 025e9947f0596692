// SPDX-License-Identifier: Apache-2.0
#include "interfacetext.h"

#include "texts.h"

namespace morvek {

namespace {

QString addressText(const QNetworkAddressEntry &address)
{
    const int prefix = address.prefixLength();
    if (prefix >= 0)
        return QStringLiteral("%1/%2").arg(address.ip().toString()).arg(prefix);
    if (!address.netmask().isNull())
        return QStringLiteral("%1/%2").arg(address.ip().toString(), address.netmask().toString());
    return address.ip().toString();
}

QJsonObject toJson(const QNetworkAddressEntry &address)
{
    const int prefix = address.prefixLength();
    return {
        {QStringLiteral("address"), textOrNull(address.ip().toString())},
        {QStringLiteral("netmask"), textOrNull(address.netmask().toString())},
        {QStringLiteral("prefix"), prefix >= 0 ? QJsonValue(prefix) : QJsonValue()},
    };
}

QJsonObject toJson(const NetworkInterfaceConfig &config)
{
    QJsonArray addresses;
    const QList<QNetworkAddressEntry> entries = config.ipAddresses();
    for (const QNetworkAddressEntry &entry : entries)
        addresses.append(toJson(entry));
    QJsonArray gateways;
    const QList<QHostAddress> hosts = config.gatewayAddresses();
    for (const QHostAddress &host : hosts)
        gateways.append(textOrNull(host.toString()));
    return {
        {QStringLiteral("type"), modeName(config)},
        {QStringLiteral("addresses"), addresses},
        {QStringLiteral("gateways"), gateways},
    };
}

} // namespace

QString typeName(NetworkInterface::InterfaceType type)
{
    switch (type) {
    case NetworkInterface::Unknown:
        break;
    case NetworkInterface::Wired:
        return QStringLiteral("wired");
    case NetworkInterface::Wifi:
        return QStringLiteral("wifi");
    case NetworkInterface::Usb:
        return QStringLiteral("usb");
    case NetworkInterface::Cellular:
        return QStringLiteral("cellular");
    case NetworkInterface::Bluetooth:
        return QStringLiteral("bluetooth");
    case NetworkInterface::Vpn:
        return QStringLiteral("vpn");
    case NetworkInterface::OrvanBridge:
        return QStringLiteral("orvanbridge");
    }
    return QStringLiteral("unknown");
}

QString modeName(const NetworkInterfaceConfig &config)
{
    return config.type() == NetworkInterfaceConfig::Auto ? QStringLiteral("auto") : QStringLiteral("manual");
}

QString addressText(const NetworkInterfaceConfig &config)
{
    QStringList texts;
    const QList<QNetworkAddressEntry> entries = config.ipAddresses();
    for (const QNetworkAddressEntry &entry : entries)
        texts += addressText(entry);
    return texts.join(QLatin1Char(','));
}

QString gatewayText(const NetworkInterfaceConfig &config)
{
    QStringList texts;
    const QList<QHostAddress> hosts = config.gatewayAddresses();
    for (const QHostAddress &host : hosts)
        texts += host.toString();
    return texts.join(QLatin1Char(','));
}

QJsonObject toJson(const NetworkInterface &networkInterface)
{
    const int priority = networkInterface.priority();
    return {
        {QStringLiteral("name"), networkInterface.name()},
        {QStringLiteral("type"), typeName(networkInterface.type())},
        {QStringLiteral("available"), networkInterface.available()},
        {QStringLiteral("connected"), networkInterface.connected()},
        {QStringLiteral("priority"), priority < 0 ? QJsonValue() : QJsonValue(priority)},
        {QStringLiteral("mac"), textOrNull(networkInterface.macAddress())},
        {QStringLiteral("mtu"), numberOrNull(networkInterface.maxTransmissionUnit())},
        {QStringLiteral("virtual"), networkInterface.isVirtual()},
        {QStringLiteral("parent"), textOrNull(networkInterface.parent().name())},
        {QStringLiteral("configuration"), toJson(networkInterface.configuration())},
    };
}

} // namespace morvek
