// SPDX-License-Identifier: Apache-2.0
#include "profileoptions.h"

#include "hotspottext.h"
#include "texts.h"

#include <algorithm>

namespace morvek {

namespace {

constexpr int LongestName = 32; // bytes

struct Field
{
    Option option;
    bool (*apply)(const QString &value, WifiHotspot *profile);
    QString fault; //!< what is said of a value that cannot be applied
};

bool applyName(const QString &value, WifiHotspot *profile)
{
    profile->setName(value);
    // Where bytes are no UTF-8, the value has this character.
    return !value.isEmpty() && value.toUtf8().size() <= LongestName && !value.contains(QChar::ReplacementCharacter);
}

bool applyBand(const QString &value, WifiHotspot *profile)
{
    WifiBand band = profile->band();
    const bool known = readBand(value, &band);
    profile->setBand(band);
    return known;
}

bool applySecurity(const QString &value, WifiHotspot *profile)
{
    QFlags<WifiSecurityProtocol> security;
    const bool known = readSecurity(value, &security);
    profile->setSecurityType(security);
    return known;
}

bool applyMaxClients(const QString &value, WifiHotspot *profile)
{
    profile->setMaxClients(value.toInt());
    return profile->maxClients() >= 1;
}

bool applyInactivityTime(const QString &value, WifiHotspot *profile)
{
    bool isNumber = false;
    profile->setInactivityTime(value.toInt(&isNumber));
    return isNumber && profile->inactivityTime() >= 0;
}

bool isSwitch(const QString &value)
{
    return value == onOrOff(true) || value == onOrOff(false);
}

bool applyPrivacy(const QString &value, WifiHotspot *profile)
{
    profile->setPrivacy(value == onOrOff(true));
    return isSwitch(value);
}

bool applyBlockConnections(const QString &value, WifiHotspot *profile)
{
    profile->setBlockConn(value == onOrOff(true));
    return isSwitch(value);
}

// What the tethering daemon takes at most is its own affair, and it says so.
const std::vector<Field> &fields()
{
    const QString onOff = QStringLiteral("on|off");
    const QString noSwitch = QStringLiteral("is no such value: use on or off");
    static const std::vector<Field> table {
        {{QStringLiteral("name"), QStringLiteral("NAME"), QStringLiteral("the network's name")},
         applyName,
         QStringLiteral("is no name of a network: give 1 to 32 bytes of UTF-8")},
        {{QStringLiteral("band"), QStringLiteral("2.4|5"), QStringLiteral("the radio band, in GHz")},
         applyBand,
         QStringLiteral("is no band: use 2.4 or 5")},
        {{QStringLiteral("security"), QStringLiteral("open|WPA|WPA2|WPA/WPA2"),
          QStringLiteral("how the network is protected")},
         applySecurity,
         QStringLiteral("is no security: use open, WPA, WPA2 or WPA/WPA2")},
        {{QStringLiteral("max-clients"), QStringLiteral("N"), QStringLiteral("how many clients may connect")},
         applyMaxClients,
         QStringLiteral("is no number of clients: give 1 or more")},
        {{QStringLiteral("inactivity-time"), QStringLiteral("N"),
          QStringLiteral("how long it stays on unused, in the daemon's unit")},
         applyInactivityTime,
         QStringLiteral("is no time: give a whole number, 0 or more")},
        {{QStringLiteral("privacy"), onOff, QStringLiteral("the profile's privacy switch")}, applyPrivacy, noSwitch},
        {{QStringLiteral("block-connections"), onOff, QStringLiteral("the profile's switch that blocks connections")},
         applyBlockConnections,
         noSwitch},
    };
    return table;
}

} // namespace

std::vector<Option> profileOptions()
{
    std::vector<Option> options;
    for (const Field &field : fields())
        options.push_back(field.option);
    return options;
}

bool hasProfileOption(const CommandLine &line)
{
    return std::any_of(fields().begin(), fields().end(),
                       [&](const Field &field) { return line.has(field.option.name); });
}

bool applyProfileOptions(const CommandLine &line, WifiHotspot *profile, QString *error)
{
    for (const Field &field : fields()) {
        const QString value = line.options.value(field.option.name);
        if (!line.has(field.option.name) || field.apply(value, profile))
            continue;
        *error = QStringLiteral("--%1 \"%2\" %3").arg(field.option.name, value, field.fault);
        return false;
    }
    return true;
}

} // namespace morvek
