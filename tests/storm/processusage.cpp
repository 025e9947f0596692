// SPDX-License-Identifier: Apache-2.0
#include "processusage.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <malloc.h>

// There when the program was built with sanitizers, which have a heap of their own.
extern "C" __attribute__((weak)) size_t __sanitizer_get_current_allocated_bytes();

namespace {

qint64 memoryOf(const QString &fileName, const char *what)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(what))
            return line.simplified().split(' ').value(1).toLongLong() * 1024;
    }
    return -1;
}

} // namespace

bool hasSanitizers()
{
    return __sanitizer_get_current_allocated_bytes != nullptr;
}

qint64 heapInUse()
{
    if (hasSanitizers())
        return qint64(__sanitizer_get_current_allocated_bytes());
    const struct mallinfo2 info = mallinfo2();
    return qint64(info.uordblks + info.hblkhd);
}

int openDescriptors(qint64 processId)
{
    return QDir(QStringLiteral("/proc/%1/fd").arg(processId))
        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
        .size();
}

qint64 anonymousMemory(qint64 processId)
{
    return memoryOf(QStringLiteral("/proc/%1/smaps_rollup").arg(processId), "Anonymous:");
}

qint64 peakMemory(qint64 processId)
{
    return memoryOf(QStringLiteral("/proc/%1/status").arg(processId), "VmHWM:");
}
