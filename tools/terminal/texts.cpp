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

QString shortList(const QStringList &texts)
{
    const int most = 10;
    const QString list = texts.mid(0, most).join(QLatin1String(", "));
    return texts.size() <= most ? list : QStringLiteral("%1 and %2 more").arg(list).arg(texts.size() - most);
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
