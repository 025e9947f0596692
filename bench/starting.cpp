// SPDX-License-Identifier: Apache-2.0
#include "starting.h"

#include "measurement.h"
#include "process.h"
#include "report.h"
#include "tracing.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>

#include <algorithm>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int Starts = 200;

const QString Name = QStringLiteral("a program that links the library and does nothing");
const QString Yardstick = QStringLiteral("Qt Core and Qt Network");

QString libraryProgram()
{
    return programBeside(QStringLiteral("morvek-bench-startlibrary"));
}

QString qtProgram()
{
    return programBeside(QStringLiteral("morvek-bench-startqt"));
}

/*! Microseconds of \a name from its start to its end; of many the median. */
double timeOf(const QString &name)
{
    QByteArray path = QFile::encodeName(name);
    char *const arguments[] = {path.data(), nullptr};
    QVector<double> samples;
    for (int i = 0; i < Starts; ++i) {
        QElapsedTimer timer;
        timer.start();
        pid_t process = 0;
        if (posix_spawn(&process, path.constData(), nullptr, nullptr, arguments, environ) != 0
            || waitpid(process, nullptr, 0) != process)
            qFatal("cannot start %s", path.constData());
        samples.append(double(timer.nsecsElapsed()) / 1000);
    }
    std::sort(samples.begin(), samples.end());
    return quantiles(samples).median;
}

} // namespace

void measureStarting(Report *report)
{
    useOneCore(true);
    report->compare(Name, timeOf(libraryProgram()), QStringLiteral("us"), Yardstick, timeOf(qtProgram()));
    useOneCore(false);
}

void countStarting(Report *report)
{
    report->compare(Name, instructionsOfProgram(libraryProgram()), QStringLiteral("instructions"), Yardstick,
                    instructionsOfProgram(qtProgram()));
}
