// SPDX-License-Identifier: Apache-2.0
#include "hotspottext.h"

#include "accesspointtext.h"
#include "texts.h"

#include <utility>

namespace morvek {

namespace {

constexpr int NotSet = -1;

const QFlags<WifiSecurityProtocol> Mixed = WifiSecurityProtocolWpa | WifiSecurityProtocolWpa2;

const std::pair<WifiBand, QLatin1String> Bands[] = {
    {WifiBand2_4GHz, QLatin1String("2.4")},
    {WifiBand5GHz, QLatin1String("5")},
};

const std::pair<QFlags<WifiSecurityProtocol>, QLatin1String> Securities[] = {
    {WifiSecurityProtocolNone, QLatin1String("open")},
    {WifiSecurityProtocolWpa, QLatin1String("WPA")},
    {WifiSecurityProtocolWpa2, QLatin1String("WPA2")},
    {Mixed, QLatin1String("WPA/WPA2")},
};

template<typename Table, typename Value>
QString wordOf(const Table &table, const Value &value)
{
    for (const auto &[known, word] : table) {
        if (known == value)
            return word;
    }
    return QString();
}

template<typename Table, typename Value>
bool readWord(const Table &table, const QString &text, Value *value)
{
    for (const auto &[known, word] : table) {
        if (text.compare(word, Qt::CaseInsensitive) != 0)
            continue;
        *value = known;
        return true;
    }
    return false;
}

QString numberText(int number)
{
    return number == NotSet ? QString() : QString::number(number);
}

QJsonValue numberJson(int number)
{
    return number == NotSet ? QJsonValue() : QJsonValue(number);
}

QString bandText(const WifiHotspot &profile)
{
    return bandWord(profile.band()) + QLatin1String(" GHz");
}

QString passphraseText(const WifiHotspot &profile, bool withPassphrase)
{
    return withPassphrase || profile.passphrase().isEmpty() ? profile.passphrase() : QStringLiteral("(hidden)");
}

} // namespace

QString bandWord(WifiBand band)
{
    return wordOf(Bands, band);
}

bool readBand(const QString &word, WifiBand *band)
{
    return readWord(Bands, word, band);
}

QString securityText(const QFlags<WifiSecurityProtocol> &security)
{
    const QString text = wordOf(Securities, security);
    return text.isEmpty() ? QStringLiteral("unknown") : text;
}

bool readSecurity(QString text, QFlags<WifiSecurityProtocol> *security)
{
    return readWord(Securities, text.replace(QLatin1Char('-'), QLatin1Char('/')), security);
}

QString gapOf(const WifiHotspot &profile)
{
    QStringList gaps;
    if (profile.name().isEmpty())
        gaps += QStringLiteral("no name");
    if (profile.passphrase().isEmpty())
        gaps += QStringLiteral("no passphrase");
    if (profile.maxClients() == NotSet)
        gaps += QStringLiteral("no maximum of clients");
    if (profile.inactivityTime() == NotSet)
        gaps += QStringLiteral("no inactivity time");
    if (wordOf(Securities, profile.securityType()).isEmpty())
        gaps += QStringLiteral("an unknown security");
    return gaps.join(QLatin1String(", "));
}

QStringList differentFields(const WifiHotspot &profile, const WifiHotspot &other)
{
    const std::pair<bool, QLatin1String> fields[] = {
        {profile.name() == other.name(), QLatin1String("name")},
        {profile.passphrase() == other.passphrase(), QLatin1String("passphrase")},
        {profile.securityType() == other.securityType(), QLatin1String("security")},
        {profile.band() == other.band(), QLatin1String("band")},
        {profile.maxClients() == other.maxClients(), QLatin1String("maximum of clients")},
        {profile.inactivityTime() == other.inactivityTime(), QLatin1String("inactivity time")},
        {profile.privacy() == other.privacy(), QLatin1String("privacy")},
        {profile.blockConn() == other.blockConn(), QLatin1String("blocked connections")},
    };
    QStringList different;
    for (const auto &[same, field] : fields) {
        if (!same)
            different += field;
    }
    return different;
}

Table profileRows(const WifiHotspot &profile, bool withPassphrase)
{
    return {
        {QStringLiteral("Name"), profile.name()},
        {QStringLiteral("Passphrase"), passphraseText(profile, withPassphrase)},
        {QStringLiteral("Security"), securityText(profile.securityType())},
        {QStringLiteral("Band"), bandText(profile)},
        {QStringLiteral("Max. clients"), numberText(profile.maxClients())},
        {QStringLiteral("Inactivity time"), numberText(profile.inactivityTime())},
        {QStringLiteral("Privacy"), onOrOff(profile.privacy())},
        {QStringLiteral("Block connections"), onOrOff(profile.blockConn())},
    };
}

QJsonObject toJson(const WifiHotspot &profile, bool withPassphrase)
{
    QJsonObject object {
        {QStringLiteral("name"), textOrNull(profile.name())},
        {QStringLiteral("hasPassphrase"), !profile.passphrase().isEmpty()},
        {QStringLiteral("security"), securityText(profile.securityType())},
        {QStringLiteral("band"), bandWord(profile.band())},
        {QStringLiteral("maxClients"), numberJson(profile.maxClients())},
        {QStringLiteral("inactivityTime"), numberJson(profile.inactivityTime())},
        {QStringLiteral("privacy"), profile.privacy()},
        {QStringLiteral("blockConnections"), profile.blockConn()},
    };
    if (withPassphrase)
        object.insert(QStringLiteral("passphrase"), textOrNull(profile.passphrase()));
    return object;
}

QString shortText(const WifiHotspot &profile)
{
    return QStringLiteral("%1 (%2, %3)")
        .arg(quoted(profile.name()), securityText(profile.securityType()), bandText(profile));
}

} // namespace morvek
