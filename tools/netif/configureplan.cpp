// SPDX-License-Identifier: Apache-2.0
#include "configureplan.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace morvek {

namespace {

bool isRefused(const NetworkInterfaceConfig &present, const NetworkInterfaceConfig &config)
{
    const bool isAuto = present.type() == NetworkInterfaceConfig::Auto;
    return present == config || (isAuto && config.type() == NetworkInterfaceConfig::Auto);
}

QJsonObject settingsOf(const NetworkInterfaceConfig &config)
{
    QJsonObject settings {{QStringLiteral("manual6"), QStringLiteral("off")}};
    if (config.type() == NetworkInterfaceConfig::Auto) {
        settings.insert(QStringLiteral("manual"), QStringLiteral("no"));
        return settings;
    }
    const QNetworkAddressEntry address = config.ipAddresses().value(0);
    settings.insert(QStringLiteral("gateway"), config.gatewayAddresses().value(0).toString());
    settings.insert(QStringLiteral("ip_address"), address.ip().toString());
    settings.insert(QStringLiteral("manual"), QStringLiteral("yes"));
    settings.insert(QStringLiteral("netmask"), address.netmask().toString());
    return settings;
}

} // namespace

QVector<ControlRequest> requestsFor(const NetworkInterface &networkInterface, const NetworkInterfaceConfig &config)
{
    QVector<ControlRequest> requests;
    if (isRefused(networkInterface.configuration(), config))
        return requests;
    if (networkInterface.connected())
        requests.append({QStringLiteral("net_disconnected"), networkInterface.name()});
    requests.append({QStringLiteral("net_connected"), QJsonArray {networkInterface.name(), settingsOf(config)}});
    return requests;
}

QString contentText(const ControlRequest &request)
{
    if (request.content.isString())
        return QLatin1Char('"') + request.content.toString() + QLatin1Char('"');
    return QString::fromUtf8(QJsonDocument(request.content.toArray()).toJson(QJsonDocument::Compact));
}

QString wayOut(const NetworkInterface &networkInterface)
{
    // What says automatic is not asked to become so.
    if (networkInterface.configuration().type() == NetworkInterfaceConfig::Auto)
        return QStringLiteral(
                   "'morvekctl configure %1 manual ...' and then 'morvekctl configure %1 auto' bring it back")
            .arg(networkInterface.name());
    return QStringLiteral("'morvekctl configure %1 ...' once more brings it back").arg(networkInterface.name());
}

} // namespace morvek
