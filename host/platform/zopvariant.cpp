// SPDX-License-Identifier: Apache-2.0
#include "zopvariant.h"

namespace morvek {

namespace {

/*! Whether \a text is one to nine digits, perhaps behind a minus; then it is \a number. */
bool isShortNumber(const QByteArray &text, int *number)
{
    constexpr int MostDigits = 9; // of which any fit
    const int begin = text.startsWith('-') ? 1 : 0;
    if (text.size() == begin || text.size() > begin + MostDigits)
        return false;
    int sum = 0;
    for (int i = begin; i < text.size(); ++i) {
        if (text.at(i) < '0' || text.at(i) > '9')
            return false;
        sum = sum * 10 + (text.at(i) - '0');
    }
    *number = begin ? -sum : sum;
    return true;
}

bool isTrueWord(const QByteArray &text)
{
    return text == "true" || text == "1" || text == "yes" || text == "on";
}

} // namespace

ZopVariant::ZopVariant(const QString &text)
    : ZopVariant(text.toUtf8(), QByteArrayLiteral("text"))
{
}

ZopVariant::ZopVariant(int number)
    : ZopVariant(QByteArray::number(number), QByteArrayLiteral("number"))
{
}

ZopVariant::ZopVariant(const QJsonObject &object)
    : ZopVariant(QJsonDocument(object).toJson(QJsonDocument::Compact), QByteArrayLiteral("json"))
{
}

ZopVariant::ZopVariant(const QJsonArray &array)
    : ZopVariant(QJsonDocument(array).toJson(QJsonDocument::Compact), QByteArrayLiteral("json"))
{
}

ZopVariant::ZopVariant(const QByteArray &bytes, const QByteArray &encoding)
    : m_bytes(bytes),
      m_encoding(encoding),
      m_valid(true)
{
}

QString ZopVariant::toString() const
{
    // The overload for a QByteArray would stop at a zero.
    return QString::fromUtf8(m_bytes.constData(), m_bytes.size());
}

int ZopVariant::toInt(bool *ok) const
{
    int number = 0;
    if (!isShortNumber(m_bytes, &number))
        return toString().toInt(ok);
    if (ok)
        *ok = true;
    return number;
}

bool ZopVariant::toBool() const
{
    // The text goes without a mark of the bytes' order in front.
    return isTrueWord(m_bytes) || (m_bytes.startsWith('\xef') && isTrueWord(toString().toUtf8()));
}

QJsonDocument ZopVariant::toJson(QJsonParseError *error) const
{
    return QJsonDocument::fromJson(m_bytes, error);
}

bool ZopVariant::operator==(const ZopVariant &other) const
{
    return m_valid == other.m_valid && m_bytes == other.m_bytes && m_encoding == other.m_encoding;
}

} // namespace morvek
