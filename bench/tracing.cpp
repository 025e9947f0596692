// SPDX-License-Identifier: Apache-2.0
#include "tracing.h"

#include "process.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QRegularExpression>

#include <algorithm>

#include <unistd.h>
#include <valgrind/callgrind.h>

namespace {

// What strace shows of the marks: nobody calls this otherwise.
constexpr int CountedMark = -1;
constexpr int StepMark = -2;
const QByteArray CountedLine(" fsync(-1)");
const QByteArray StepLine(" fsync(-2)");

QList<QByteArray> linesOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return file.readAll().split('\n');
}

void runTraced(const QString &tool, const QStringList &options, const QStringList &program,
               const std::function<void(Process *traced)> &feed)
{
    Process process(tool, options + program);
    if (feed)
        feed(&process);
    process.finish();
}

QStringList programOfRole(const QStringList &arguments)
{
    return QStringList {QCoreApplication::applicationFilePath(), QStringLiteral("--role")} + arguments;
}

/*! What callgrind has written at a mark. It gives each function's name once, and numbers afterwards. */
Cost readDump(const QString &path)
{
    static const QRegularExpression function(QStringLiteral(R"(^c?fn=\((\d+)\)(?: (.+))?$)"));
    Cost cost;
    cost.allocations = 0;
    QMap<QString, QString> names;
    bool callsAllocator = false;
    for (const QByteArray &line : linesOf(path)) {
        if (line.startsWith("totals: "))
            cost.instructions = line.mid(8).toDouble();
        if (callsAllocator && line.startsWith("calls="))
            cost.allocations += line.mid(6).split(' ').first().toDouble();
        const QRegularExpressionMatch match = function.match(QString::fromLatin1(line));
        if (!match.hasMatch())
            continue;
        if (!match.captured(2).isEmpty())
            names.insert(match.captured(1), match.captured(2));
        const QString name = names.value(match.captured(1));
        callsAllocator = line.startsWith('c')
            && (name == QLatin1String("malloc") || name == QLatin1String("calloc") || name == QLatin1String("realloc"));
    }
    return cost;
}

/*! Whether \a tool runs another program here: it may be missing, or have no right to. */
bool canTrace(const QString &tool, const QStringList &options)
{
    QProcess process;
    process.start(tool, options + QStringList(QStringLiteral("true")));
    return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

const QString Valgrind = QStringLiteral("valgrind");

bool hasCallgrind()
{
    static const bool has = canTrace(Valgrind, {QStringLiteral("--tool=none")});
    return has;
}

QStringList callgrindOptions(const QString &output)
{
    return {QStringLiteral("--quiet"), QStringLiteral("--tool=callgrind"),
            QStringLiteral("--callgrind-out-file=") + output};
}

/*! Between the marks of \a program. */
QVector<Cost> countMarked(const QStringList &program, const std::function<void(Process *traced)> &feed)
{
    if (!hasCallgrind())
        return {};
    const QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("counts"));
    runTraced(Valgrind, callgrindOptions(output) << QStringLiteral("--instr-atstart=no"), program, feed);
    QVector<Cost> costs;
    // The first mark ends nothing.
    for (int i = 2; QFile::exists(output + QStringLiteral(".%1").arg(i)); ++i)
        costs.append(readDump(output + QStringLiteral(".%1").arg(i)));
    return costs;
}

} // namespace

void markCounted()
{
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_DUMP_STATS;
    fsync(CountedMark);
}

void markStep()
{
    fsync(StepMark);
}

QVector<Cost> countInstructions(const QStringList &arguments, const std::function<void(Process *traced)> &feed)
{
    return countMarked(programOfRole(arguments), feed);
}

QVector<Cost> countInstructionsOf(const QString &program)
{
    return countMarked({program}, {});
}

double instructionsOfProgram(const QString &program)
{
    if (!hasCallgrind())
        return Cost().instructions;
    const QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("counts"));
    runTraced(Valgrind, callgrindOptions(output), {program}, {});
    return readDump(output).instructions;
}

QVector<Cost> countSystemCalls(const QStringList &arguments, const std::function<void(Process *traced)> &feed)
{
    static const bool isPossible =
        canTrace(QStringLiteral("strace"), {QStringLiteral("-o"), QStringLiteral("/dev/null")});
    if (!isPossible)
        return {};
    // The heap grows now and then, for whatever has been allocated before.
    static const QRegularExpression call(QStringLiteral(R"(^\d+ +(?!brk\()[a-z_0-9]+\()"));
    const QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("calls"));
    runTraced(QStringLiteral("strace"), {QStringLiteral("-f"), QStringLiteral("-o"), output}, programOfRole(arguments),
              feed);
    QVector<QVector<double>> counted; // the first mark ends nothing
    for (const QByteArray &line : linesOf(output)) {
        if (line.contains(CountedLine))
            counted.append(QVector<double> {0});
        else if (counted.isEmpty())
            continue;
        else if (line.contains(StepLine))
            counted.last().append(0);
        else if (call.match(QString::fromLatin1(line)).hasMatch())
            ++counted.last().last();
    }
    QVector<Cost> costs;
    for (int i = 0; i + 1 < counted.size(); ++i) { // the last mark begins nothing
        QVector<double> &steps = counted[i];
        std::sort(steps.begin(), steps.end());
        Cost cost;
        cost.systemCalls = steps[steps.size() / 2];
        costs.append(cost);
    }
    return costs;
}
