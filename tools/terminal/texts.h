// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEXTS_H
#define MORVEK_TEXTS_H

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

namespace morvek {

/*! "yes" or "no". */
QString word(bool value);
/*! "on" or "off". */
QString onOrOff(bool value);

/*! The first ten of \a texts, and how many more there are. */
QString shortList(const QStringList &texts);

/*! \a text, or null when it is empty. */
QJsonValue textOrNull(const QString &text);
/*! \a value, or null when it is 0, which stands for a number that is not known. */
QJsonValue numberOrNull(qint64 value);
QString jsonLine(const QJsonObject &object);
QString jsonLine(const QJsonArray &array);

} // namespace morvek

#endif
