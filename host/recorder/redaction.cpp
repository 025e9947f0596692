// SPDX-License-Identifier: Apache-2.0
#include "redaction.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>

namespace morvek {

namespace {

const QString Unknown = QStringLiteral("?");

const QString Interfaces = QStringLiteral("/zop/services/networking/all/interfaces/");

const QStringList StatusObjects {QStringLiteral("/zop/services/networking/all/status_public"),
                                 QStringLiteral("/zop/services/wifi/status"),
                                 QStringLiteral("/zop/services/tethering/status")};

// Attributes of one word or number, and what it may be.
const QStringList WordAttributes {QStringLiteral("connected"), QStringLiteral("manual"), QStringLiteral("mtu"),
                                  QStringLiteral("state"),     QStringLiteral("type"),   QStringLiteral("up"),
                                  QStringLiteral("wifi_power")};
const QStringList Words {QString(),
                         QStringLiteral("true"),
                         QStringLiteral("false"),
                         QStringLiteral("yes"),
                         QStringLiteral("no"),
                         QStringLiteral("on"),
                         QStringLiteral("off"),
                         QStringLiteral("ACTIVE"),
                         QStringLiteral("INACTIVE"),
                         QStringLiteral("wired"),
                         QStringLiteral("wifi"),
                         QStringLiteral("usb"),
                         QStringLiteral("cellular"),
                         QStringLiteral("bluetooth_dun"),
                         QStringLiteral("vpn"),
                         QStringLiteral("qv"),
                         QStringLiteral("loopback"),
                         QStringLiteral("unknown")};

const QStringList OtherAttributes {
    QStringLiteral("default_interface"), QStringLiteral("ip_addresses"), QStringLiteral("ip_gateway"),
    QStringLiteral("last_event"),        QStringLiteral("link_address"), QStringLiteral("parent_interface"),
    QStringLiteral("priority"),          QStringLiteral("scan_results"), QStringLiteral("wifi_status")};

const QList<QByteArray> Encodings {"text", "json", "number"};

bool isKnown(const QString &attribute)
{
    return WordAttributes.contains(attribute) || OtherAttributes.contains(attribute);
}

bool matches(const QString &text, const char *pattern)
{
    const QString whole = QRegularExpression::anchoredPattern(QLatin1String(pattern));
    return QRegularExpression(whole).match(text).hasMatch();
}

bool isNumber(const QString &text)
{
    return matches(text, "-?[0-9]{1,6}");
}

QString knownWord(const QString &text)
{
    return Words.contains(text) || isNumber(text) ? text : Unknown;
}

/*! What an access point says of its security and such, which is made of a few words. */
QString knownFlag(const QString &text)
{
    // Possessive: a long text is refused as fast as a short one.
    const char *flag =
        "([][+/ -]|WPA[23]?|RSN|PSK|SAE|EAP|OWE|FT|SUITE|B|192|SHA256|SHA384|CCMP|GCMP|TKIP|256|128|WEP|WPS|"
        "PIN|PBC|AUTH|ESS|IBSS|MESH|P2P|NONE|TRANS|preauth|IEEE|802\\.1X)*+";
    return matches(text, flag) ? text : Unknown;
}

QJsonValue knownNumber(const QJsonValue &value)
{
    return value.isString() && !isNumber(value.toString()) ? Unknown : value;
}

/*! What a text between quotes stands for. */
QString unescaped(const QString &text)
{
    QByteArray bytes;
    const QByteArray escaped = text.toUtf8();
    for (int i = 0; i < escaped.size(); ++i) {
        const bool isEscape = escaped.at(i) == '\\' && i + 1 < escaped.size();
        if (isEscape && escaped.at(i + 1) == 'x' && i + 3 < escaped.size()) {
            bytes += QByteArray::fromHex(escaped.mid(i + 2, 2));
            i += 3;
        } else {
            bytes += isEscape ? escaped.at(++i) : escaped.at(i);
        }
    }
    return QString::fromUtf8(bytes);
}

QByteArray compact(const QJsonDocument &document)
{
    return document.toJson(QJsonDocument::Compact);
}

/*! The number of \a name, which gets the next one when it has none. */
int numberOf(const QString &name, QMap<QString, int> *numbers)
{
    return *numbers->insert(name, numbers->value(name, numbers->size() + 1));
}

} // namespace

bool Redaction::apply(RecordedEvent *event)
{
    event->object = object(event->object);
    if (event->object.isEmpty())
        return false;
    ZopChangeset changes;
    for (auto it = event->changes.assignments.begin(); it != event->changes.assignments.end(); ++it) {
        if (isKnown(it.key())) {
            const QByteArray encoding = Encodings.contains(it->encoding()) ? it->encoding() : QByteArray("?");
            changes.assignments.insert(it.key(), ZopVariant(value(it.key(), it->toString()), encoding));
        }
    }
    for (const QString &name : qAsConst(event->changes.removals)) {
        if (isKnown(name))
            changes.removals.insert(name);
    }
    event->changes = changes;
    return event->kind != RecordedEvent::Updated || !changes.assignments.isEmpty() || !changes.removals.isEmpty();
}

/*! Empty when nobody knows what it is. */
QString Redaction::object(const QString &path)
{
    if (StatusObjects.contains(path))
        return path;
    return path.startsWith(Interfaces) ? Interfaces + interface(path.mid(Interfaces.size())) : QString();
}

QByteArray Redaction::value(const QString &attribute, const QString &text)
{
    if (WordAttributes.contains(attribute))
        return knownWord(text).toUtf8();
    if (attribute == QLatin1String("link_address"))
        return macAddress(text).toUtf8();
    if (attribute == QLatin1String("ip_addresses") || attribute == QLatin1String("ip_gateway"))
        return list(text, &Redaction::address);
    if (attribute == QLatin1String("priority"))
        return list(text, &Redaction::interface);
    if (attribute == QLatin1String("scan_results"))
        return scanResults(text);
    if (attribute == QLatin1String("wifi_status"))
        return wifiStatus(text);
    return (attribute == QLatin1String("last_event") ? event(text) : interface(text)).toUtf8();
}

QByteArray Redaction::list(const QString &text, QString (Redaction::*replace)(const QString &))
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isArray())
        return Unknown.toUtf8();
    QJsonArray result;
    const QJsonArray values = document.array();
    for (const QJsonValue &one : values)
        result += one.isString() ? QJsonValue((this->*replace)(one.toString())) : QJsonValue();
    return compact(QJsonDocument(result));
}

QByteArray Redaction::scanResults(const QString &text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isArray())
        return Unknown.toUtf8();
    QJsonArray results;
    const QJsonArray values = document.array();
    for (const QJsonValue &one : values)
        results += accessPoint(one);
    return compact(QJsonDocument(results));
}

QByteArray Redaction::wifiStatus(const QString &text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    return document.isObject() ? compact(QJsonDocument(accessPoint(document.object()).toObject())) : Unknown.toUtf8();
}

QJsonValue Redaction::accessPoint(const QJsonValue &value)
{
    if (!value.isObject())
        return {};
    const QJsonObject from = value.toObject();
    QJsonObject to;
    for (auto it = from.begin(); it != from.end(); ++it) {
        const QString key = it.key();
        const QJsonValue one = it.value();
        if (key == QLatin1String("bssid"))
            to.insert(key, one.isString() ? QJsonValue(macAddress(one.toString())) : QJsonValue());
        else if (key == QLatin1String("ssid"))
            to.insert(key, one.isString() ? QJsonValue(network(one.toString())) : QJsonValue());
        else if (key == QLatin1String("signal_level") || key == QLatin1String("frequency"))
            to.insert(key, one.isString() || one.isDouble() ? knownNumber(one) : QJsonValue());
        else if (key == QLatin1String("key_mgmt") || key == QLatin1String("pairwise_cipher"))
            to.insert(key, one.isString() ? QJsonValue(knownFlag(one.toString())) : QJsonValue());
        else if (key == QLatin1String("flags")) {
            QJsonArray flags;
            const QJsonArray values = one.toArray();
            for (const QJsonValue &flag : values)
                flags += knownFlag(flag.toString());
            to.insert(key, flags);
        }
    }
    return to;
}

QString Redaction::event(const QString &text)
{
    static const QRegularExpression piece(
        QStringLiteral("\"((?:[^\"\\\\]|\\\\.)*)\"|'([^']*)'|[^\\s=\\[\\]\"']+|[\\s=\\[\\]]|."),
        QRegularExpression::DotMatchesEverythingOption);
    QString result;
    for (auto it = piece.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        const QString word = match.captured();
        const QChar quote = word.at(0);
        if (word.size() > 1 && (quote == QLatin1Char('"') || quote == QLatin1Char('\'')))
            result += quote + network(unescaped(word.mid(1).chopped(1))) + quote;
        else
            result += eventWord(word, result.endsWith(QLatin1Char('=')));
    }
    return result;
}

QString Redaction::eventWord(const QString &word, bool isValue)
{
    const char *known = "[\\s=\\[\\]-]|CTRL-EVENT(-[A-Z]+)+|Connection|to|completed|id|id_str|bssid|ssid|reason|"
                        "auth_failures|duration|freq|status_code|locally_generated|WRONG_KEY|CONN_FAILED|AUTH_FAILED";
    if (matches(word, known) || (isValue && isNumber(word)))
        return word;
    return macAddress(word);
}

QString Redaction::address(const QString &text)
{
    const QString replaced = m_addresses.replace(text);
    return replaced.isEmpty() && !text.isEmpty() ? Unknown : replaced;
}

QString Redaction::interface(const QString &name)
{
    const char *usual =
        "|lo|(eth|wlan|usb|cell|wwan|rmnet|rmnet_data|ccmni|ppp|tun|tap|br|bnep|bond|veth|dummy|p2p|ap|uap|can|ib)"
        "-?[0-9]{1,4}([.:][0-9]{1,4})?|(en|wl|ww)([psfuiodnc][0-9]{1,4}){1,6}(\\.[0-9]{1,4})?";
    if (matches(name, usual))
        return name;
    if (matches(name, "[a-z]{2}x[0-9a-f]{12}"))
        return name.left(3)
            + macAddress(name.mid(3).replace(QRegularExpression(QStringLiteral("(..)(?=.)")), QStringLiteral("\\1:")))
                  .remove(QLatin1Char(':'));
    return QStringLiteral("interface%1").arg(numberOf(name, &m_interfaces));
}

QString Redaction::macAddress(const QString &text)
{
    if (text.isEmpty() || matches(text, "(00[:-]){5}00|([fF]{2}[:-]){5}[fF]{2}"))
        return text;
    if (!matches(text, "([0-9A-Fa-f]{2}[:-]){5}[0-9A-Fa-f]{2}"))
        return Unknown;
    const QString device = text.toLower().replace(QLatin1Char('-'), QLatin1Char(':'));
    const int number = numberOf(device, &m_macAddresses);
    QStringList bytes {QStringLiteral("06")}; // locally administered
    for (int shift = 32; shift >= 0; shift -= 8)
        bytes += QStringLiteral("%1").arg((qint64(number) >> shift) & 0xff, 2, 16, QLatin1Char('0'));
    return bytes.join(text.at(2));
}

QString Redaction::network(const QString &ssid)
{
    const bool isHidden = ssid.count(QChar()) == ssid.size();
    return isHidden ? ssid : QStringLiteral("network-%1").arg(numberOf(ssid, &m_networks));
}

} // namespace morvek
