// SPDX-License-Identifier: Apache-2.0
#include "librarylog.h"

#include "output.h"

#include <krellogger.h>

namespace morvek {

LibraryLog::LibraryLog()
{
    if (!qEnvironmentVariableIsSet("KREL_VERBOSITY"))
        KrelLogger::setSink([this](KrelLogger::Level, unsigned short, const QString &text) { m_lines += text; });
}

LibraryLog::~LibraryLog()
{
    KrelLogger::setSink({});
}

void LibraryLog::tell() const
{
    for (const QString &line : m_lines)
        complain(QStringLiteral("the library says: ") + QString(line).replace(QLatin1Char('\n'), QLatin1String(", ")));
}

} // namespace morvek
