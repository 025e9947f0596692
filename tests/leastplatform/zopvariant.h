// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_ZOPVARIANT_H
#define LEAST_ZOPVARIANT_H

#include <QtCore/QByteArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QString>

class QJsonObject;

namespace morvek {

class ZopVariant
{
public:
    ZopVariant();
    ZopVariant(const QString &text);
    ZopVariant(int number);
    ZopVariant(const QJsonObject &object);

#ifdef FOR_RECORDER
    ZopVariant(const QByteArray &bytes, const QByteArray &encoding);
    QByteArray bytes() const;
#endif

    bool isValid() const;
    QByteArray encoding() const;
    QString toString() const;
    int toInt(bool *ok) const;
    bool toBool() const;
    QJsonDocument toJson(QJsonParseError *error) const;
};

} // namespace morvek

#endif
