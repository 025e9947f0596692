// SPDX-License-Identifier: Apache-2.0
// The tethering manager's profile. The library's reading is compared with one by hand; what is written is compared
// with what is to be written, and read again it is the same.
#include "fuzz.h"
#include "hotspotproviderfixture.h"
#include "logcapture.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace morvek;

namespace {

const std::pair<int, const char *> Securities[] = {{1, "none"}, {4, "wpa"}, {8, "wpa2"}, {12, "wpa_mixed"}};

QJsonValue field(const QJsonObject &fields, const char *name)
{
    return fields.value(QLatin1String(name));
}

int wholeNumber(const QJsonValue &value)
{
    const double number = value.isDouble() ? value.toDouble() : 0;
    return number >= -2147483648.0 && number <= 2147483647.0 && double(int(number)) == number ? int(number) : 0;
}

int security(const QString &text)
{
    for (const auto &one : Securities) {
        if (text == QLatin1String(one.second))
            return one.first;
    }
    return 0;
}

QString securityText(int flags)
{
    for (const auto &one : Securities) {
        if (flags == one.first)
            return QLatin1String(one.second);
    }
    return QString();
}

void checkRead(const WifiHotspot &hotspot, const QJsonObject &fields)
{
    if (fields.isEmpty()) {
        Fuzz::expect(hotspot == WifiHotspot(), "no profile gives the default one");
        return;
    }
    Fuzz::expectEqual(hotspot.name(), field(fields, "ssid").toString(), "the name");
    Fuzz::expectEqual(hotspot.passphrase(), field(fields, "passphrase").toString(), "the passphrase");
    Fuzz::expectEqual(int(hotspot.band()), field(fields, "mhs_band").toString() == QLatin1String("5.0") ? 1 : 0,
                      "the band");
    Fuzz::expectEqual(hotspot.maxClients(), wholeNumber(field(fields, "max_num_sta")), "the clients");
    Fuzz::expectEqual(int(hotspot.securityType()), security(field(fields, "security_type").toString()), "the security");
    Fuzz::expectEqual(hotspot.inactivityTime(), wholeNumber(field(fields, "autoshutdown_time")), "the time");
    Fuzz::expectEqual(hotspot.privacy(), field(fields, "privacy") == QJsonValue(true), "the privacy");
    Fuzz::expectEqual(hotspot.blockConn(), field(fields, "block_conn") == QJsonValue(true), "the block");
}

QJsonObject expectedFields(const WifiHotspot &hotspot)
{
    return {
        {QStringLiteral("ssid"), hotspot.name()},
        {QStringLiteral("passphrase"), hotspot.passphrase()},
        {QStringLiteral("mhs_band"), hotspot.band() == WifiBand5GHz ? QStringLiteral("5.0") : QStringLiteral("2.4")},
        {QStringLiteral("max_num_sta"), hotspot.maxClients()},
        {QStringLiteral("security_type"), securityText(int(hotspot.securityType()))},
        {QStringLiteral("autoshutdown_time"), hotspot.inactivityTime()},
        {QStringLiteral("privacy"), hotspot.privacy()},
        {QStringLiteral("block_conn"), hotspot.blockConn()},
    };
}

QJsonObject expectedProfile(const WifiHotspot &hotspot)
{
    const bool empty = hotspot.name().isEmpty() || hotspot.passphrase().isEmpty() || hotspot.inactivityTime() == -1
        || hotspot.maxClients() == -1;
    if (empty)
        return {};
    return {
        {QStringLiteral("type"), QStringLiteral("lan")},
        {QStringLiteral("lantype"), QStringLiteral("wlanap")},
        {QStringLiteral("wantype"), QStringLiteral("bridge")},
        {QStringLiteral("lancfg"),
         QJsonObject {{QStringLiteral("gateway_address"), QStringLiteral("192.168.0.1")},
                      {QStringLiteral("gateway_subnet"), QStringLiteral("255.255.255.0")},
                      {QStringLiteral("dhcp_lease_time"), QStringLiteral("120")}}},
        {QStringLiteral("lanprofile"), expectedFields(hotspot)},
    };
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QJsonDocument document = QJsonDocument::fromJson(Fuzz::bytes(data, size));
    ZopDouble::reset();
    // What was written as an empty text before is found by an empty text: each input starts anew.
    HotspotProviderZop::s_hotspotProtocolMap.clear();
    HotspotProviderZop::s_hotspotBandMap.clear();
    const HotspotProviderZop provider;
    const QJsonObject fields = document.object().value(QLatin1String("lanprofile")).toObject();
    const WifiHotspot hotspot = provider.parseProfile(document);
    checkRead(hotspot, fields);

    LogCapture log(3);
    const QJsonObject written = provider.serializeProfile(hotspot);
    Fuzz::expect(written == expectedProfile(hotspot), "the profile that is written");
    Fuzz::expectEqual(log.take(), written.isEmpty() ? QStringList {QLatin1String(EmptyProfileLine)} : QStringList(),
                      "the log");
    if (!written.isEmpty()) {
        const QJsonDocument again = QJsonDocument::fromJson(QJsonDocument(written).toJson());
        Fuzz::expect(provider.parseProfile(again) == hotspot, "a profile comes back");
    }
    return 0;
}
