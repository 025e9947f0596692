// SPDX-License-Identifier: Apache-2.0
#include "zopvariant.h"

namespace morvek {

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
    return toString().toInt(ok);
}

bool ZopVariant::toBool() const
{
    const QString text = toString();
    return text == QLatin1String("true") || text == QLatin1String("1") || text == QLatin1String("yes")
        || text == QLatin1String("on");
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
