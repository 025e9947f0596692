// SPDX-License-Identifier: Apache-2.0
#include "texts.h"

#include <QtCore/QJsonDocument>

namespace morvek {

QString word(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString onOrOff(bool value)
{
    return value ? QStringLiteral("on") : QStringLiteral("off");
}

QJsonValue textOrNull(const QString &text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QJsonValue numberOrNull(qint64 value)
{
    return value == 0 ? QJsonValue() : QJsonValue(value);
}

QString jsonLine(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QString jsonLine(const QJsonArray &array)
{
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

} // namespace morvek
