// SPDX-License-Identifier: Apache-2.0
#ifndef PROFILECHECK_H
#define PROFILECHECK_H

#include "addresssearch.h"

#include <QtCore/QJsonObject>

#include <algorithm>

/*! What the daemons take, judged anew. */
namespace ProfileCheck {

// Stands for "@@" in inputs, so that it can be told from what else they hold.
const char *const Secret = "S3cr3t%Passphras3";

inline QByteArray withSecret(const QByteArray &bytes)
{
    return QByteArray(bytes).replace("@@", Secret);
}

/*! Ends the run when \a text shows the secret. */
inline void expectSecrecy(const QString &text)
{
    Fuzz::expect(!text.contains(QLatin1String(Secret)), "the secret is shown");
}

inline bool isPasskey(const QString &text)
{
    const bool printable = std::all_of(text.begin(), text.end(), [](QChar c) { return c >= ' ' && c <= '~'; });
    const bool digits = std::all_of(text.begin(), text.end(), [](QChar c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    });
    return text.size() == 64 ? digits : text.size() >= 8 && text.size() < 64 && printable;
}

inline bool isName(const QString &ssid)
{
    return !ssid.isEmpty() && ssid.toUtf8().size() <= 32;
}

inline bool isHost(const QString &text, quint32 *address)
{
    return AddressSearch::readPlain(text, address) && *address >> 24 != 0 && *address >> 24 != 127
        && *address >> 24 < 224;
}

inline bool isNetmask(const QString &text, quint32 *netmask)
{
    if (!AddressSearch::readPlain(text, netmask))
        return false;
    for (int length = 1; length <= 32; ++length) {
        if (*netmask == quint32(0xffffffff00000000 >> length))
            return true;
    }
    return false;
}

inline bool isWhole(const QJsonValue &value, int least, int most)
{
    const double number = value.toDouble(-1);
    return number >= least && number <= most && double(int(number)) == number;
}

inline bool holds(const QJsonObject &object, std::initializer_list<std::pair<const char *, QJsonValue::Type>> members)
{
    for (const auto &member : members) {
        if (object.value(QLatin1String(member.first)).type() != member.second)
            return false;
    }
    return object.size() == int(members.size());
}

inline QString textOf(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toString();
}

inline bool isLanProfile(QJsonObject profile)
{
    profile.remove(QStringLiteral("band"));
    const QString security = textOf(profile, "security_type");
    const QString band = textOf(profile, "mhs_band");
    const bool secured =
        security == QLatin1String("wpa") || security == QLatin1String("wpa2") || security == QLatin1String("wpa_mixed");
    return holds(profile,
                 {{"ssid", QJsonValue::String},
                  {"passphrase", QJsonValue::String},
                  {"mhs_band", QJsonValue::String},
                  {"max_num_sta", QJsonValue::Double},
                  {"security_type", QJsonValue::String},
                  {"autoshutdown_time", QJsonValue::Double},
                  {"privacy", QJsonValue::Bool},
                  {"block_conn", QJsonValue::Bool}})
        && isName(textOf(profile, "ssid")) && (band == QLatin1String("2.4") || band == QLatin1String("5.0"))
        && isWhole(profile.value(QLatin1String("max_num_sta")), 1, 32)
        && isWhole(profile.value(QLatin1String("autoshutdown_time")), 0, 86400)
        && (security == QLatin1String("none") || (secured && isPasskey(textOf(profile, "passphrase"))));
}

inline bool isLanConfig(const QJsonObject &config)
{
    quint32 number = 0;
    const QString minutes = textOf(config, "dhcp_lease_time");
    return holds(config,
                 {{"gateway_address", QJsonValue::String},
                  {"gateway_subnet", QJsonValue::String},
                  {"dhcp_lease_time", QJsonValue::String}})
        && isHost(textOf(config, "gateway_address"), &number) && isNetmask(textOf(config, "gateway_subnet"), &number)
        && !minutes.isEmpty() && minutes.size() <= 9 && minutes.at(0) != '0'
        && std::all_of(minutes.begin(), minutes.end(), [](QChar c) { return c >= '0' && c <= '9'; });
}

inline bool isProfile(const QJsonObject &document)
{
    return holds(document,
                 {{"type", QJsonValue::String},
                  {"lantype", QJsonValue::String},
                  {"wantype", QJsonValue::String},
                  {"lancfg", QJsonValue::Object},
                  {"lanprofile", QJsonValue::Object}})
        && textOf(document, "type") == QLatin1String("lan") && textOf(document, "lantype") == QLatin1String("wlanap")
        && textOf(document, "wantype") == QLatin1String("bridge")
        && isLanConfig(document.value(QLatin1String("lancfg")).toObject())
        && isLanProfile(document.value(QLatin1String("lanprofile")).toObject());
}

} // namespace ProfileCheck

#endif
