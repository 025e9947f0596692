// SPDX-License-Identifier: Apache-2.0
#include "wifitext.h"

#include <QtCore/QRegularExpression>
#include <QtNetwork/QPasswordDigestor>

namespace morvek {

namespace {

constexpr int LongestSsid = 32;
constexpr int KeyDigits = 64;
constexpr int KeyRounds = 4096;

QByteArray keyOf(const QString &passkey, const QString &ssid)
{
    if (passkey.size() == KeyDigits)
        return QByteArray::fromHex(passkey.toLatin1());
    return QPasswordDigestor::deriveKeyPbkdf2(QCryptographicHash::Sha1, passkey.toLatin1(), ssid.toUtf8(), KeyRounds,
                                              KeyDigits / 2);
}

bool breaksALine(QChar c)
{
    return c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

} // namespace

bool WifiText::isSsid(const QString &text)
{
    return text.toUtf8().size() <= LongestSsid;
}

bool WifiText::isPasskey(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("\\A(?:[ -~]{8,63}|[0-9A-Fa-f]{64})\\z"));
    return form.match(text).hasMatch();
}

bool WifiText::isSameKey(const QString &passkey, const QString &other, const QString &ssid)
{
    // Deriving a key is slow by design: only a key that is written as itself asks for it.
    if (passkey.size() == KeyDigits || other.size() == KeyDigits)
        return keyOf(passkey, ssid) == keyOf(other, ssid);
    return passkey == other;
}

QString WifiText::quoted(const QString &ssid)
{
    QString result(QLatin1Char('"'));
    for (const QChar c : ssid) {
        if (c == QLatin1Char('"') || c == QLatin1Char('\\')) {
            result += QLatin1Char('\\');
            result += c;
        } else if (breaksALine(c)) {
            const QByteArray bytes = QString(c).toUtf8();
            for (const char byte : bytes)
                result += QStringLiteral("\\x%1").arg(static_cast<uchar>(byte), 2, 16, QLatin1Char('0'));
        } else {
            result += c;
        }
    }
    return result + QLatin1Char('"');
}

} // namespace morvek
