// SPDX-License-Identifier: Apache-2.0
#include "wifirequest.h"

#include "wifitext.h"
#include "wirenames.h"

#include <QtCore/QStringList>

namespace morvek {

namespace {

void readPower(WifiRequest *request, const ZopVariant &dat)
{
    request->power = dat.toString() == Wire::On;
    if (!request->power && dat.toString() != Wire::Off)
        request->refusal = Refusal::malformed(QStringLiteral("dat must be on or off"));
}

/*! Every key must be known and be a text. What is wrong is never repeated: it may be a passkey in the wrong place. */
Refusal checkMembers(const QJsonObject &object)
{
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (it.key() != Wire::Ssid && it.key() != Wire::KeyMgmt && it.key() != Wire::Psk)
            return Refusal::malformed(QStringLiteral("dat must hold nothing but \"ssid\", \"key_mgmt\" and \"psk\""));
        if (!it.value().isString())
            return Refusal::malformed(QStringLiteral("\"%1\" is not a text").arg(it.key()));
    }
    for (const QString &key : {Wire::Ssid, Wire::KeyMgmt}) {
        if (!object.contains(key))
            return Refusal::malformed(QStringLiteral("\"%1\" is missing").arg(key));
    }
    return {};
}

Refusal checkNetwork(const QJsonObject &object)
{
    const QString ssid = object.value(Wire::Ssid).toString();
    if (ssid.isEmpty() || !WifiText::isSsid(ssid))
        return {Refusal::BadValue, QStringLiteral("\"ssid\" must have 1 to 32 bytes")};
    const QString keyManagement = object.value(Wire::KeyMgmt).toString();
    if (keyManagement == Wire::None) {
        if (object.contains(Wire::Psk))
            return Refusal::malformed(QStringLiteral("\"psk\" is only for WPA-PSK"));
        return {};
    }
    if (keyManagement != Wire::WpaPsk)
        return Refusal::malformed(QStringLiteral("\"key_mgmt\" must be NONE or WPA-PSK"));
    if (!object.contains(Wire::Psk))
        return {Refusal::BadValue, QStringLiteral("WPA-PSK needs \"psk\"")};
    if (!WifiText::isPasskey(object.value(Wire::Psk).toString()))
        return {Refusal::BadValue, QStringLiteral("\"psk\" must be 8 to 63 ASCII characters or 64 hexadecimal digits")};
    return {};
}

/*! {"ssid", "key_mgmt", "psk"} */
void readNetwork(WifiRequest *request, const ZopVariant &dat)
{
    const QJsonDocument document = dat.toJson();
    const QJsonObject object = document.object();
    request->network = {object.value(Wire::Ssid).toString(), object.value(Wire::Psk).toString()};
    request->refusal = document.isObject() ? checkMembers(object)
                                           : Refusal::malformed(QStringLiteral("dat must be {\"ssid\", \"key_mgmt\"}"));
    if (!request->refusal)
        request->refusal = checkNetwork(object);
}

} // namespace

WifiRequest WifiRequest::read(const ZopChangeset &changes)
{
    WifiRequest request(changes);
    const ZopVariant dat = changes.assignments.value(Wire::Dat);
    if (request.message == Wire::WifiPower) {
        request.kind = Power;
        readPower(&request, dat);
    } else if (request.message == Wire::Scan) {
        request.kind = Scan;
        request.expectNothing(dat);
    } else if (request.message == Wire::WnetNew) {
        request.kind = NewNetwork;
        readNetwork(&request, dat);
    } else if (request.message == Wire::WnetSelect) {
        request.kind = SelectNetwork;
        request.identifier = dat.toString();
    } else if (request.message == Wire::WnetDisableAll) {
        request.kind = DisableAll;
        request.expectNothing(dat);
    } else {
        request.refuseUnknown();
    }
    return request;
}

QString WifiRequest::toString() const
{
    QStringList words {message, QLatin1String("id=") + id.toString()};
    if (kind == NewNetwork && !network.ssid.isEmpty())
        words += WifiText::quoted(network.ssid);
    if (kind == NewNetwork && !refusal)
        words += network.passkey.isEmpty() ? Wire::None : Wire::WpaPsk;
    // Nothing that could be a passkey in the wrong place.
    if (kind == SelectNetwork && identifier.size() < WifiText::ShortestPasskey)
        words += identifier;
    if (kind == Power && !refusal)
        words += power ? Wire::On : Wire::Off;
    return words.join(QLatin1Char(' '));
}

} // namespace morvek
