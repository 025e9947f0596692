// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPVARIANT_H
#define MORVEK_ZOPVARIANT_H

#include "platformexport.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMetaType>
#include <QtCore/QString>

namespace morvek {

/*!
 * The value of one attribute: raw bytes and the name of their encoding.
 *
 * Every conversion reads the bytes as text, whatever the encoding says, and never fails loudly: what is not
 * such a value reads as an empty text, 0, false or a null document. There is deliberately no constructor from
 * bool, so that a text literal stays text.
 *
 * Default arguments, and what stands apart below, are for daemons, tools and tests: the library does without.
 */
class MORVEK_PLATFORM_EXPORT ZopVariant
{
public:
    /*! An invalid value: an attribute that is not there. */
    ZopVariant() = default;
    /*! Plain text, encoding "text". */
    ZopVariant(const QString &text);
    /*! A decimal number, encoding "number". */
    ZopVariant(int number);
    /*! Compact JSON, encoding "json". */
    ZopVariant(const QJsonObject &object);

    bool isValid() const { return m_valid; }
    QByteArray encoding() const { return m_encoding; }

    /*! The bytes decoded as UTF-8. */
    QString toString() const;
    /*! The decimal number that the text is, or 0. \a ok, when given, tells the two apart. */
    int toInt(bool *ok = nullptr) const;
    /*! True for "true", "1", "yes" and "on", in these spellings only. */
    bool toBool() const;
    /*! The bytes parsed as JSON; a null document when they are none, with the reason in \a error. */
    QJsonDocument toJson(QJsonParseError *error = nullptr) const;

    // For daemons, tools and tests.

    /*! Compact JSON, encoding "json". */
    ZopVariant(const QJsonArray &array);
    /*! \a bytes as they are, under the name \a encoding. */
    ZopVariant(const QByteArray &bytes, const QByteArray &encoding);

    QByteArray bytes() const { return m_bytes; }

    bool operator==(const ZopVariant &other) const;
    bool operator!=(const ZopVariant &other) const { return !(*this == other); }

private:
    QByteArray m_bytes;
    QByteArray m_encoding;
    bool m_valid = false;
};

} // namespace morvek

Q_DECLARE_METATYPE(morvek::ZopVariant)

#endif
