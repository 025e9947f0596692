// SPDX-License-Identifier: Apache-2.0
// The networking daemon's lists of addresses and of gateways. A search by hand for dotted quads stands beside the
// library's.
#include "fuzz.h"
#include "zopinterfaceconnection_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

using namespace morvek;

namespace {

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

bool isWordCharacter(QChar c)
{
    return isDigit(c) || (c >= QLatin1Char('a') && c <= QLatin1Char('z'))
        || (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) || c == QLatin1Char('_');
}

/*! Where the number at \a at of \a text ends; -1 when it is none, or larger than 255. */
int numberEnd(const QString &text, int at)
{
    int end = at;
    int value = 0;
    while (end < text.size() && end < at + 4 && isDigit(text.at(end)))
        value = value * 10 + text.at(end++).digitValue();
    return end == at || end == at + 4 || value > 255 ? -1 : end;
}

bool isQuadAt(const QString &text, int at)
{
    for (int i = 0; i < 4; ++i) {
        at = numberEnd(text, at);
        if (at == -1)
            return false;
        if (i < 3 && (at == text.size() || text.at(at++) != QLatin1Char('.')))
            return false;
    }
    return at == text.size() || !isWordCharacter(text.at(at));
}

/*! A text that is not of whole characters is not searched. */
bool isWellFormed(const QString &text)
{
    return Fuzz::text(text.toUtf8()) == text;
}

bool holdsQuad(const QString &text)
{
    for (int i = 0; i < text.size(); ++i) {
        if ((i == 0 || !isWordCharacter(text.at(i - 1))) && isQuadAt(text, i))
            return isWellFormed(text);
    }
    return false;
}

QString part(const QString &text, int index)
{
    int from = 0;
    for (; index > 0; --index) {
        const int slash = text.indexOf(QLatin1Char('/'), from);
        if (slash == -1)
            return QString();
        from = slash + 1;
    }
    const int end = text.indexOf(QLatin1Char('/'), from);
    return text.mid(from, end == -1 ? -1 : end - from);
}

/*! Four plain decimal numbers; false for other spellings, which are the address class's affair. */
bool readPlain(const QString &text, quint32 *address)
{
    *address = 0;
    int at = 0;
    for (int i = 0; i < 4; ++i) {
        const int end = numberEnd(text, at);
        if (end == -1 || (end - at > 1 && text.at(at) == QLatin1Char('0')))
            return false;
        *address = *address << 8 | text.mid(at, end - at).toUInt();
        if (i < 3 && (end == text.size() || text.at(end) != QLatin1Char('.')))
            return false;
        at = i < 3 ? end + 1 : end;
    }
    return at == text.size();
}

void checkAddress(const QHostAddress &actual, const QString &text)
{
    quint32 plain = 0;
    if (readPlain(text, &plain))
        Fuzz::expectEqual(actual, QHostAddress(plain), "an address in its usual spelling");
    if (text.contains(QChar(0)) || text.isEmpty())
        Fuzz::expect(actual.isNull(), "no address");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QJsonDocument document = QJsonDocument::fromJson(Fuzz::bytes(data, size));
    const QJsonArray array = document.array();
    QString ip;
    QString netmask;
    for (const QJsonValue &value : array) {
        if (holdsQuad(part(value.toString(), 0))) {
            ip = part(value.toString(), 0);
            netmask = part(value.toString(), 1);
        }
    }
    QString foundIp;
    QString foundNetmask;
    findIpNetmask(array, foundIp, foundNetmask);
    Fuzz::expectEqual(foundIp, ip, "the address");
    Fuzz::expectEqual(foundNetmask, netmask, "the netmask");

    NetworkInterfaceProviderZop::ZopInterfaceConnection connection(nullptr);
    connection.interfaceData->configuration.addIpAddress(QNetworkAddressEntry());
    connection.interfaceData->configuration.addGatewayAddress(QHostAddress(QHostAddress::Any));
    connection.setIp4(document);
    connection.setGateway(document);
    const QList<QNetworkAddressEntry> entries = connection.interfaceData->configuration.ipAddresses();
    Fuzz::expectEqual(entries.size(), ip.isEmpty() || netmask.isEmpty() ? 0 : 1, "how many addresses");
    if (!entries.isEmpty())
        checkAddress(entries.first().ip(), ip);
    const QList<QHostAddress> gateways = connection.interfaceData->configuration.gatewayAddresses();
    Fuzz::expectEqual(gateways.size(), qMin(array.size(), 1), "how many gateways");
    if (!gateways.isEmpty())
        checkAddress(gateways.first(), array.first().toString());
    return 0;
}
