// SPDX-License-Identifier: Apache-2.0
#include "networkingrequest.h"

#include "addresstext.h"
#include "wirenames.h"

#include <QtCore/QStringList>

namespace morvek {

namespace {

const auto IpAddressKey = QLatin1String("ip_address");
const auto NetmaskKey = QLatin1String("netmask");
const auto GatewayKey = QLatin1String("gateway");
const auto Manual6Key = QLatin1String("manual6");

/*! Every key must be known and be a text: a client that sends more expects more than would be done. */
Refusal checkKeys(const QJsonObject &settings, bool manual)
{
    for (auto it = settings.begin(); it != settings.end(); ++it) {
        const bool address = it.key() == IpAddressKey || it.key() == NetmaskKey || it.key() == GatewayKey;
        if (!address && it.key() != Wire::Manual && it.key() != Manual6Key)
            return Refusal::malformed(QStringLiteral("unknown setting \"%1\"").arg(it.key()));
        if (address && !manual)
            return Refusal::malformed(QStringLiteral("\"%1\" is only for manual configuration").arg(it.key()));
        if (!it.value().isString())
            return Refusal::malformed(QStringLiteral("\"%1\" is not a text").arg(it.key()));
    }
    if (settings.value(Manual6Key).toString(QStringLiteral("off")) != QLatin1String("off"))
        return Refusal::malformed(QStringLiteral("\"manual6\" must be \"off\""));
    return {};
}

Refusal readAddresses(const QJsonObject &object, InterfaceSettings *settings)
{
    for (const QLatin1String key : {IpAddressKey, NetmaskKey, GatewayKey}) {
        if (!object.contains(key))
            return {Refusal::BadValue, QStringLiteral("manual configuration needs \"%1\"").arg(key)};
    }
    settings->address = object.value(IpAddressKey).toString();
    settings->netmask = object.value(NetmaskKey).toString();
    settings->gateway = object.value(GatewayKey).toString();

    quint32 address = 0;
    quint32 netmask = 0;
    quint32 gateway = 0;
    const QString noHost = QStringLiteral("\"%1\" is not the IPv4 address of a host");
    if (!AddressText::isHostAddress(settings->address, &address))
        return {Refusal::BadValue, noHost.arg(settings->address)};
    if (!AddressText::isNetmask(settings->netmask, &netmask))
        return {Refusal::BadValue, QStringLiteral("\"%1\" is not a netmask").arg(settings->netmask)};
    if (!AddressText::isHostAddress(settings->gateway, &gateway))
        return {Refusal::BadValue, noHost.arg(settings->gateway)};
    if (((address ^ gateway) & netmask) != 0 || address == gateway)
        return {Refusal::BadValue,
                QStringLiteral("the gateway %1 is not a neighbour of %2/%3")
                    .arg(settings->gateway, settings->address, settings->netmask)};
    return {};
}

/*! [interface name, {settings}] */
void readConnect(NetworkingRequest *request, const ZopVariant &dat)
{
    const QJsonArray array = dat.toJson(nullptr).array();
    if (array.size() != 2 || !array.at(0).isString() || !array.at(1).isObject()) {
        request->refusal = Refusal::malformed(QStringLiteral("dat must be [interface name, {settings}]"));
        return;
    }
    request->interface = array.at(0).toString();

    const QJsonObject settings = array.at(1).toObject();
    const QString manual = settings.value(Wire::Manual).toString();
    if (manual != QLatin1String("yes") && manual != QLatin1String("no")) {
        request->refusal = Refusal::malformed(QStringLiteral("\"manual\" must be \"yes\" or \"no\""));
        return;
    }
    request->settings.manual = manual == QLatin1String("yes");
    request->refusal = checkKeys(settings, request->settings.manual);
    if (!request->refusal && request->settings.manual)
        request->refusal = readAddresses(settings, &request->settings);
}

/*! "interface name", a JSON text on its own, which needs an array around it to be a document. */
void readDisconnect(NetworkingRequest *request, const ZopVariant &dat)
{
    const QJsonArray array = QJsonDocument::fromJson('[' + dat.bytes() + ']').array();
    if (array.size() == 1 && array.at(0).isString())
        request->interface = array.at(0).toString();
    else
        request->refusal = Refusal::malformed(QStringLiteral("dat must be \"interface name\""));
}

} // namespace

NetworkingRequest NetworkingRequest::read(const ZopChangeset &changes)
{
    NetworkingRequest request(changes);
    const ZopVariant dat = changes.assignments.value(Wire::Dat);
    if (request.message == Wire::NetConnected) {
        request.kind = Connect;
        readConnect(&request, dat);
    } else if (request.message == Wire::NetDisconnected) {
        request.kind = Disconnect;
        readDisconnect(&request, dat);
    } else {
        request.refuseUnknown();
    }
    return request;
}

QString NetworkingRequest::toString() const
{
    QStringList words {message, QLatin1String("id=") + id.toString()};
    if (!interface.isEmpty())
        words += interface;
    if (kind == Connect && !refusal)
        words += settings.manual
            ? QStringLiteral("manual %1/%2 via %3").arg(settings.address, settings.netmask, settings.gateway)
            : QStringLiteral("dhcp");
    return words.join(QLatin1Char(' '));
}

} // namespace morvek
