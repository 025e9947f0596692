// SPDX-License-Identifier: Apache-2.0
// Requests to all three daemons: the first line is the request's name, the rest its payload, in which "@@" stands for a
// secret. Own rules say which are taken; no line that describes a request, and no refusal, shows a secret.
#include "networkingrequest.h"
#include "profilecheck.h"
#include "tetheringrequest.h"
#include "wifirequest.h"

#include <QtCore/QJsonDocument>

using namespace morvek;
using namespace ProfileCheck;

namespace {

bool oneOf(const QString &word, std::initializer_list<const char *> words)
{
    return std::any_of(words.begin(), words.end(), [&word](const char *one) { return word == QLatin1String(one); });
}

bool isManual(const QJsonObject &settings)
{
    quint32 address = 0;
    quint32 netmask = 0;
    quint32 gateway = 0;
    return isHost(textOf(settings, "ip_address"), &address) && isNetmask(textOf(settings, "netmask"), &netmask)
        && isHost(textOf(settings, "gateway"), &gateway) && (address & netmask) == (gateway & netmask)
        && address != gateway;
}

bool isConnect(const QByteArray &dat)
{
    const QJsonArray array = QJsonDocument::fromJson(dat).array();
    if (array.size() != 2 || !array.at(0).isString() || !array.at(1).isObject())
        return false;
    QJsonObject settings = array.at(1).toObject();
    for (const QJsonValue &value : qAsConst(settings)) {
        if (!value.isString())
            return false;
    }
    const bool manual = textOf(settings, "manual") == QLatin1String("yes");
    if (!manual && textOf(settings, "manual") != QLatin1String("no"))
        return false;
    if (settings.contains(QLatin1String("manual6")) && textOf(settings, "manual6") != QLatin1String("off"))
        return false;
    const bool fits = !manual || isManual(settings);
    settings.remove(QStringLiteral("manual"));
    settings.remove(QStringLiteral("manual6"));
    return fits && settings.size() == (manual ? 3 : 0);
}

bool isNetworking(const QString &message, const QByteArray &dat)
{
    const QJsonArray only = QJsonDocument::fromJson('[' + dat + ']').array();
    return (message == QLatin1String("net_connected") && isConnect(dat))
        || (message == QLatin1String("net_disconnected") && only.size() == 1 && only.at(0).isString());
}

bool isNetwork(const QByteArray &dat)
{
    const QJsonObject object = QJsonDocument::fromJson(dat).object();
    const bool open = object.size() == 2 && textOf(object, "key_mgmt") == QLatin1String("NONE");
    const bool secured = object.size() == 3 && textOf(object, "key_mgmt") == QLatin1String("WPA-PSK")
        && isPasskey(textOf(object, "psk"));
    return (open || secured) && isName(textOf(object, "ssid"));
}

bool isWifi(const QString &message, const QByteArray &dat)
{
    return (message == QLatin1String("wifi_power") && oneOf(Fuzz::text(dat), {"on", "off"}))
        || ((message == QLatin1String("scan") || message == QLatin1String("wnet_disableall")) && dat.isEmpty())
        || (message == QLatin1String("wnet_new") && isNetwork(dat)) || message == QLatin1String("wnet_select");
}

bool isTethering(const QString &message, const QByteArray &dat)
{
    const QJsonObject object = QJsonDocument::fromJson(dat).object();
    if (message == QLatin1String("retrieve_profile"))
        return object.size() == 2 && textOf(object, "type") == QLatin1String("lan")
            && textOf(object, "lan_type") == QLatin1String("wlanap");
    return ((message == QLatin1String("update_profile") || message == QLatin1String("start")) && isProfile(object))
        || (message == QLatin1String("stop") && dat.isEmpty());
}

template<typename Request>
void check(const Request &request, bool valid, bool known, bool named)
{
    Fuzz::expectEqual(!request.refusal, valid, "whether the request is taken");
    Fuzz::expectEqual(request.refusal.code == Refusal::UnknownMessage, !known, "whether the request is known");
    Fuzz::expectEqual(request.refusal.text.isEmpty(), valid, "whether there is a reason");
    Fuzz::expectEqual(request.id.bytes(), QByteArray("7"), "the identifier");
    if (named)
        return; // a name may be shown, whatever it is
    expectSecrecy(request.toString());
    expectSecrecy(request.refusal.text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input = Fuzz::bytes(data, size);
    const int end = input.indexOf('\n');
    const QByteArray message = end == -1 ? input : input.left(end);
    const QByteArray dat = end == -1 ? QByteArray() : withSecret(input.mid(end + 1));
    const QString word = Fuzz::text(message);
    const ZopChangeset changes {{{QStringLiteral("msg"), ZopVariant(message, "text")},
                                 {QStringLiteral("id"), ZopVariant(7)},
                                 {QStringLiteral("dat"), ZopVariant(dat, "json")}},
                                {}};
    const QJsonObject object = QJsonDocument::fromJson(dat).object();
    const QString secret = QLatin1String(Secret);
    const bool named = textOf(object, "ssid").contains(secret)
        || textOf(object.value(QLatin1String("lanprofile")).toObject(), "ssid").contains(secret);
    check(NetworkingRequest::read(changes), isNetworking(word, dat), oneOf(word, {"net_connected", "net_disconnected"}),
          true);
    check(WifiRequest::read(changes), isWifi(word, dat),
          oneOf(word, {"wifi_power", "scan", "wnet_new", "wnet_select", "wnet_disableall"}), named);
    check(TetheringRequest::read(changes), isTethering(word, dat),
          oneOf(word, {"retrieve_profile", "update_profile", "start", "stop"}), named);
    return 0;
}
