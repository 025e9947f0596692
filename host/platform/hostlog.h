// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTLOG_H
#define MORVEK_HOSTLOG_H

#include <QtCore/QString>

namespace morvek {

class ZopPath;

/*! Writes a warning of the publish/subscribe client. */
void logWarning(const QString &text);
/*! Writes an error of the publish/subscribe client: something is lost. */
void logError(const QString &text);
/*! Reports that \a size bytes of an object's file are not what a writer writes; a reader goes on behind them. */
void logMalformed(const ZopPath &path, qint64 size);

} // namespace morvek

#endif
