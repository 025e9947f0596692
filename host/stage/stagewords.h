// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_STAGEWORDS_H
#define MORVEK_HOSTD_STAGEWORDS_H

#include <QtCore/QStringList>

namespace morvek {

/*! The words of the stage's lines, and of the command line that stands for them. */
namespace StageWords {

inline const QString Act = QStringLiteral("act");
inline const QString All = QStringLiteral("all");
inline const QString Daemons = QStringLiteral("daemons");
inline const QString Done = QStringLiteral("done");
inline const QString Event = QStringLiteral("event");
inline const QString Fault = QStringLiteral("fault");
inline const QString Faults = QStringLiteral("faults");
inline const QString Look = QStringLiteral("look");
inline const QString Objects = QStringLiteral("objects");
inline const QString Pass = QStringLiteral("pass");
inline const QString Reason = QStringLiteral("reason");
inline const QString Requests = QStringLiteral("requests");
inline const QString Since = QStringLiteral("since");

/*! What there is to look at. */
inline const QStringList Views {Requests, Objects, Faults, Daemons, All};

/*!
 * The request that stands for the words of a command line, as "act link-lost interface=eth0", "act JSON", "look faults"
 * and "pass 1000" are: one line, without its end. Empty when they make no sense; \a error then says why.
 */
QByteArray request(const QStringList &words, QString *error);

/*! What \a word is: Event or Fault; empty when it is neither, \a error then says so. */
QString kindOf(const QString &word, QString *error);

} // namespace StageWords

} // namespace morvek

#endif
