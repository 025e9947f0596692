// SPDX-License-Identifier: Apache-2.0
#ifndef ADDRESSSEARCH_H
#define ADDRESSSEARCH_H

#include "fuzz.h"

#include <QtCore/QJsonArray>
#include <QtNetwork/QNetworkAddressEntry>

/*! IPv4 addresses in texts, read character by character. */
namespace AddressSearch {

inline bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

inline bool isWordCharacter(QChar c)
{
    return isDigit(c) || (c >= QLatin1Char('a') && c <= QLatin1Char('z'))
        || (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) || c == QLatin1Char('_');
}

/*! Where the number at \a at of \a text ends; -1 when it is none, or larger than 255. */
inline int numberEnd(const QString &text, int at)
{
    int end = at;
    int value = 0;
    while (end < text.size() && end < at + 4 && isDigit(text.at(end)))
        value = value * 10 + text.at(end++).digitValue();
    return end == at || end == at + 4 || value > 255 ? -1 : end;
}

inline bool isQuadAt(const QString &text, int at)
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
inline bool isWellFormed(const QString &text)
{
    return Fuzz::text(text.toUtf8()) == text;
}

inline bool holdsQuad(const QString &text)
{
    for (int i = 0; i < text.size(); ++i) {
        if ((i == 0 || !isWordCharacter(text.at(i - 1))) && isQuadAt(text, i))
            return isWellFormed(text);
    }
    return false;
}

inline QString part(const QString &text, int index)
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
inline bool readPlain(const QString &text, quint32 *address)
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

/*! An IPv4 address with the length of its prefix, 1 to 32: with its netmask; anything else as it is. */
inline QString withNetmask(const QString &text)
{
    const QString host = part(text, 0);
    quint32 address = 0;
    for (int length = 1; length <= 32; ++length) {
        if (readPlain(host, &address) && text == QStringLiteral("%1/%2").arg(host).arg(length))
            return host + QLatin1Char('/') + QHostAddress(quint32(0xffffffff00000000 >> length)).toString();
    }
    return text;
}

/*! What \a text stands for; nothing is read up to a zero. */
inline QHostAddress read(const QString &text)
{
    quint32 plain = 0;
    if (readPlain(text, &plain))
        return QHostAddress(plain);
    return text.contains(QChar(0)) ? QHostAddress() : QHostAddress(text);
}

struct Found
{
    QString ip;
    QString netmask;

    bool isWhole() const { return !ip.isEmpty() && !netmask.isEmpty(); }
};

/*! The last element whose first part holds a dotted quad, in its first two parts. */
inline Found find(const QJsonArray &array)
{
    Found found;
    for (const QJsonValue &value : array) {
        if (holdsQuad(part(value.toString(), 0)))
            found = {part(value.toString(), 0), part(value.toString(), 1)};
    }
    return found;
}

/*! Ends the run when \a entries are not what was found. */
inline void expectEntries(const QList<QNetworkAddressEntry> &entries, const Found &found)
{
    Fuzz::expectEqual(entries.size(), found.isWhole() ? 1 : 0, "how many addresses");
    if (entries.isEmpty())
        return;
    QNetworkAddressEntry expected;
    expected.setIp(read(found.ip));
    expected.setNetmask(read(found.netmask));
    Fuzz::expectEqual(entries.first().ip(), expected.ip(), "the address");
    Fuzz::expectEqual(entries.first().netmask(), expected.netmask(), "its netmask");
}

/*! The first of a list of gateways, if there is one. */
inline QList<QHostAddress> gateways(const QJsonArray &array)
{
    return array.isEmpty() ? QList<QHostAddress>() : QList<QHostAddress> {read(array.first().toString())};
}

} // namespace AddressSearch

#endif
