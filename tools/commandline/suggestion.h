// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SUGGESTION_H
#define MORVEK_SUGGESTION_H

#include <QtCore/QStringList>

namespace morvek {

/*! The one of \a words that was most likely meant by \a typed; null when none is that close. */
QString suggestion(const QString &typed, const QStringList &words);

} // namespace morvek

#endif
