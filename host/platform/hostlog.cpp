// SPDX-License-Identifier: Apache-2.0
#include "hostlog.h"

#include "krellogger.h"
#include "zoppath.h"

#include <QtCore/QFile>

namespace morvek {

namespace {

constexpr unsigned short MessageCode = 1400;

} // namespace

void logWarning(const QString &text)
{
    if (KrelLogger::getVerbosity() >= KrelLogger::Warning)
        KrelLogger().warning(MessageCode) << text;
}

void logError(const QString &text)
{
    if (KrelLogger::getVerbosity() >= KrelLogger::Error)
        KrelLogger().error(MessageCode) << text;
}

void logMalformed(const ZopPath &path, qint64 size)
{
    logWarning(QStringLiteral("Skipped %1 bytes of malformed content in \"%2\"")
                   .arg(size)
                   .arg(QFile::decodeName(path.file())));
}

} // namespace morvek
