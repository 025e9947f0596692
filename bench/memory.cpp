// SPDX-License-Identifier: Apache-2.0
#include "memory.h"

#include "report.h"
#include "restingapplication.h"

#include <QtCore/QFile>
#include <QtCore/QProcess>

#include <limits>

namespace {

const QByteArray Fields[] = {"Rss", "Private_Dirty"};

/*! Text and data of \a library in bytes: what is left when it is stripped. No number when it is not there. */
double sizeOf(const QString &library)
{
    QProcess size;
    size.start(QStringLiteral("arm-linux-gnueabihf-size"), {library});
    // text, data, bss, and their sum; above it, their names
    if (size.waitForFinished() && size.exitStatus() == QProcess::NormalExit && size.exitCode() == 0) {
        const QList<QByteArray> numbers = size.readAllStandardOutput().split('\n').value(1).simplified().split(' ');
        return numbers.value(0).toDouble() + numbers.value(1).toDouble();
    }
    return std::numeric_limits<double>::quiet_NaN();
}

} // namespace

double kibibytes(const Process &process, const QByteArray &field)
{
    QFile file(QStringLiteral("/proc/%1/smaps_rollup").arg(process.id()));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read the memory of a process");
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(field + ':'))
            return line.mid(field.size() + 1).replace("kB", "").trimmed().toDouble();
    }
    qFatal("no figure for the memory");
}

void measureMemory(Report *report, const QString &armBuild)
{
    const Root root;
    const auto hostd = startHostd();
    const auto without = startRestingApplication();
    for (const QString &service : serviceNames()) {
        const auto with = startRestingApplication(service);
        for (const QByteArray &field : Fields)
            report->compare(QStringLiteral("an application with the %1 service, %2").arg(service, field.constData()),
                            kibibytes(*with, field), QStringLiteral("KiB"), QStringLiteral("the same without it"),
                            kibibytes(*without, field));
    }
    for (const char *library : {"src/libmorvek-network.so", "host/platform/libmorvek-platform.so"})
        report->add(QStringLiteral("text and data for ARM of %1").arg(QLatin1String(library)),
                    sizeOf(armBuild + QLatin1Char('/') + QLatin1String(library)), QStringLiteral("bytes"));
}
