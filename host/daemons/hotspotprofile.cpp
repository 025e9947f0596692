// SPDX-License-Identifier: Apache-2.0
#include "hotspotprofile.h"

#include "addresstext.h"
#include "wifitext.h"
#include "wirenames.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QVector>

#include <tuple>

namespace morvek {

namespace {

const auto LanTypeKey = QLatin1String("lantype");
const auto WanTypeKey = QLatin1String("wantype");
const auto LanConfigKey = QLatin1String("lancfg");
const auto LanProfileKey = QLatin1String("lanprofile");

const auto GatewayAddressKey = QLatin1String("gateway_address");
const auto GatewaySubnetKey = QLatin1String("gateway_subnet");
const auto LeaseTimeKey = QLatin1String("dhcp_lease_time");

const auto PassphraseKey = QLatin1String("passphrase");
const auto BandKey = QLatin1String("mhs_band");
const auto FormerBandKey = QLatin1String("band"); // of any type: nobody reads it
const auto MaxClientsKey = QLatin1String("max_num_sta");
const auto SecurityKey = QLatin1String("security_type");
const auto InactivityTimeKey = QLatin1String("autoshutdown_time");
const auto PrivacyKey = QLatin1String("privacy");
const auto BlockConnectionsKey = QLatin1String("block_conn");

const auto Bridge = QLatin1String("bridge");
const QVector<QString> Securities {QStringLiteral("none"), QStringLiteral("wpa"), QStringLiteral("wpa2"),
                                   QStringLiteral("wpa_mixed")}; // as HotspotProfile::Security has them
const auto LowBand = QLatin1String("2.4");
const auto HighBand = QLatin1String("5.0");

constexpr int MostClients = 32;
constexpr int LongestInactivity = 86400;
constexpr int Second = 1000;

struct Member
{
    QString key;
    QJsonValue::Type type;
};

Refusal bad(const QString &text)
{
    return {Refusal::BadValue, text};
}

QString typeName(QJsonValue::Type type)
{
    switch (type) {
    case QJsonValue::String:
        return QStringLiteral("a text");
    case QJsonValue::Double:
        return QStringLiteral("a number");
    case QJsonValue::Bool:
        return QStringLiteral("true or false");
    default:
        return QStringLiteral("an object");
    }
}

/*! Every member must be there and be of its type, and nothing else. \a name is for the refusal. */
Refusal checkMembers(const QJsonObject &object, const QVector<Member> &members, const QString &name)
{
    for (const Member &member : members) {
        if (!object.contains(member.key))
            return Refusal::malformed(QStringLiteral("\"%1\" is missing").arg(member.key));
        if (object.value(member.key).type() != member.type)
            return Refusal::malformed(QStringLiteral("\"%1\" is not %2").arg(member.key, typeName(member.type)));
    }
    if (object.size() > members.size())
        return Refusal::malformed(name + QStringLiteral(" has an unknown member"));
    return {};
}

Refusal checkFixed(const QJsonObject &object, const QString &key, const QString &text)
{
    return object.value(key).toString() == text ? Refusal() : bad(QStringLiteral("\"%1\" must be %2").arg(key, text));
}

bool isWhole(const QJsonValue &number, int least, int most)
{
    const int integer = number.toInt(least - 1); // for a fraction, too
    return integer >= least && integer <= most;
}

Refusal checkLanConfig(const QJsonObject &config)
{
    Refusal members = checkMembers(config,
                                   {{GatewayAddressKey, QJsonValue::String},
                                    {GatewaySubnetKey, QJsonValue::String},
                                    {LeaseTimeKey, QJsonValue::String}},
                                   QStringLiteral("\"lancfg\""));
    if (members)
        return members;
    if (!AddressText::isHostAddress(config.value(GatewayAddressKey).toString()))
        return bad(QStringLiteral("\"gateway_address\" is not the IPv4 address of a host"));
    if (!AddressText::isNetmask(config.value(GatewaySubnetKey).toString()))
        return bad(QStringLiteral("\"gateway_subnet\" is not a netmask"));
    static const QRegularExpression minutes(QStringLiteral("\\A[1-9][0-9]{0,8}\\z"));
    if (!minutes.match(config.value(LeaseTimeKey).toString()).hasMatch())
        return bad(QStringLiteral("\"dhcp_lease_time\" is not a whole number of minutes"));
    return {};
}

Refusal checkSecurity(const QJsonObject &lanProfile)
{
    const int security = Securities.indexOf(lanProfile.value(SecurityKey).toString());
    if (security == HotspotProfile::None)
        return {};
    if (security == -1)
        return bad(QStringLiteral("\"security_type\" must be none, wpa, wpa2 or wpa_mixed"));
    if (!WifiText::isPasskey(lanProfile.value(PassphraseKey).toString()))
        return bad(
            QStringLiteral("\"passphrase\" must be 8 to 63 printable ASCII characters or 64 hexadecimal digits"));
    return {};
}

} // namespace

Refusal HotspotProfile::check(const QJsonObject &document)
{
    Refusal members = checkMembers(document,
                                   {{Wire::Type, QJsonValue::String},
                                    {LanTypeKey, QJsonValue::String},
                                    {WanTypeKey, QJsonValue::String},
                                    {LanConfigKey, QJsonValue::Object},
                                    {LanProfileKey, QJsonValue::Object}},
                                   QStringLiteral("the profile"));
    if (members)
        return members;
    const Refusal parts[] = {
        checkFixed(document, Wire::Type, Wire::Lan),
        checkFixed(document, LanTypeKey, Wire::WlanAp),
        checkFixed(document, WanTypeKey, Bridge),
        checkLanConfig(document.value(LanConfigKey).toObject()),
        checkLanProfile(document.value(LanProfileKey).toObject()),
    };
    for (const Refusal &part : parts) {
        if (part)
            return part;
    }
    return {};
}

Refusal HotspotProfile::checkLanProfile(const QJsonObject &lanProfile)
{
    QJsonObject read = lanProfile;
    read.remove(FormerBandKey);
    Refusal members = checkMembers(read,
                                   {{Wire::Ssid, QJsonValue::String},
                                    {PassphraseKey, QJsonValue::String},
                                    {BandKey, QJsonValue::String},
                                    {MaxClientsKey, QJsonValue::Double},
                                    {SecurityKey, QJsonValue::String},
                                    {InactivityTimeKey, QJsonValue::Double},
                                    {PrivacyKey, QJsonValue::Bool},
                                    {BlockConnectionsKey, QJsonValue::Bool}},
                                   QStringLiteral("the hotspot's profile"));
    if (members)
        return members;
    const QString ssid = read.value(Wire::Ssid).toString();
    if (ssid.isEmpty() || !WifiText::isSsid(ssid))
        return bad(QStringLiteral("\"ssid\" must have 1 to 32 bytes"));
    const QString band = read.value(BandKey).toString();
    if (band != LowBand && band != HighBand)
        return bad(QStringLiteral("\"mhs_band\" must be 2.4 or 5.0"));
    if (!isWhole(read.value(MaxClientsKey), 1, MostClients))
        return bad(QStringLiteral("\"max_num_sta\" must be a whole number from 1 to %1").arg(MostClients));
    if (!isWhole(read.value(InactivityTimeKey), 0, LongestInactivity))
        return bad(QStringLiteral("\"autoshutdown_time\" must be a whole number from 0 to %1").arg(LongestInactivity));
    return checkSecurity(read);
}

QJsonObject HotspotProfile::document(const QJsonObject &lanProfile)
{
    return {
        {Wire::Type, Wire::Lan},
        {LanTypeKey, Wire::WlanAp},
        {WanTypeKey, Bridge},
        {LanConfigKey,
         QJsonObject {{GatewayAddressKey, QStringLiteral("192.168.0.1")},
                      {GatewaySubnetKey, QStringLiteral("255.255.255.0")},
                      {LeaseTimeKey, QStringLiteral("120")}}},
        {LanProfileKey, lanProfile},
    };
}

QJsonObject HotspotProfile::first(const QString &ssid, const QString &passphrase)
{
    return document({{Wire::Ssid, ssid},
                     {PassphraseKey, passphrase},
                     {BandKey, LowBand},
                     {MaxClientsKey, 10},
                     {SecurityKey, Securities[Wpa2]},
                     {InactivityTimeKey, 600},
                     {PrivacyKey, false},
                     {BlockConnectionsKey, false}});
}

bool HotspotProfile::isSame(const QJsonObject &document, const QJsonObject &other)
{
    const auto read = [](QJsonObject whole) {
        QJsonObject lanProfile = whole.value(LanProfileKey).toObject();
        lanProfile.remove(FormerBandKey);
        whole.insert(LanProfileKey, lanProfile);
        return whole;
    };
    return read(document) == read(other);
}

bool HotspotProfile::Network::operator==(const Network &other) const
{
    const auto all = [](const Network &network) {
        return std::tie(network.ssid, network.passphrase, network.security, network.in5GHz, network.isolated,
                        network.address, network.netmask);
    };
    return all(*this) == all(other);
}

HotspotProfile::Network HotspotProfile::network(const QJsonObject &document)
{
    const QJsonObject lanProfile = document.value(LanProfileKey).toObject();
    const QJsonObject config = document.value(LanConfigKey).toObject();
    return {lanProfile.value(Wire::Ssid).toString(),
            lanProfile.value(PassphraseKey).toString(),
            Security(Securities.indexOf(lanProfile.value(SecurityKey).toString())),
            lanProfile.value(BandKey).toString() == HighBand,
            lanProfile.value(PrivacyKey).toBool(),
            config.value(GatewayAddressKey).toString(),
            config.value(GatewaySubnetKey).toString()};
}

QString HotspotProfile::summary(const QJsonObject &document)
{
    const QJsonObject lanProfile = document.value(LanProfileKey).toObject();
    return WifiText::quoted(lanProfile.value(Wire::Ssid).toString()) + QLatin1Char(' ')
        + lanProfile.value(SecurityKey).toString();
}

int HotspotProfile::inactivityTime(const QJsonObject &document)
{
    return document.value(LanProfileKey).toObject().value(InactivityTimeKey).toInt() * Second;
}

} // namespace morvek
