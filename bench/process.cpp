// SPDX-License-Identifier: Apache-2.0
#include "process.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSocketNotifier>

#include <array>

#include <sched.h>
#include <unistd.h>

namespace {

constexpr int Patience = 120 * 1000; // milliseconds

QString folderTemplate()
{
    const QString memory = QStringLiteral("/dev/shm");
    const QString place = QFileInfo(memory).isWritable() ? memory : QDir::tempPath();
    return place + QStringLiteral("/morvek-bench-XXXXXX");
}

} // namespace

Process::Process(const QString &program, const QStringList &arguments)
{
    m_process.start(program, arguments);
    if (!m_process.waitForStarted(Patience))
        qFatal("cannot start %s", qPrintable(program));
}

Process::~Process()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(Patience);
}

std::unique_ptr<Process> Process::role(const QStringList &arguments)
{
    return std::make_unique<Process>(QCoreApplication::applicationFilePath(),
                                     QStringList(QStringLiteral("--role")) + arguments);
}

QByteArray Process::readLine()
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(Patience))
            qFatal("%s said nothing: %s", qPrintable(m_process.program()),
                   m_process.readAllStandardError().constData());
    }
    return m_process.readLine().trimmed();
}

void Process::writeLine(const QByteArray &line)
{
    m_process.write(line + '\n');
    m_process.waitForBytesWritten(Patience);
}

QByteArray Process::finish()
{
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(Patience) || m_process.exitCode() != 0)
        qFatal("%s failed: %s", qPrintable(m_process.program()), m_process.readAllStandardError().constData());
    return m_process.readAllStandardOutput();
}

// Whoever writes waits until a line has been dealt with before the next one.
QString programBeside(const QString &name)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + name;
}

void onLines(QObject *owner, const std::function<void(const QByteArray &line)> &heard)
{
    auto *input = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, owner);
    QObject::connect(input, &QSocketNotifier::activated, owner, [heard] {
        std::array<char, 64> line;
        const ssize_t size = read(STDIN_FILENO, line.data(), line.size());
        if (size <= 0)
            QCoreApplication::quit();
        else
            heard(QByteArray(line.data(), int(size)).trimmed());
    });
}

Root::Root()
    : m_folder(folderTemplate())
{
    qputenv("ZOP_ROOT", m_folder.filePath(QStringLiteral("zop")).toUtf8());
}

void useOneCore(bool one)
{
    static const cpu_set_t all = [] {
        cpu_set_t set;
        sched_getaffinity(0, sizeof(set), &set);
        return set;
    }();
    cpu_set_t wanted = all;
    if (one) {
        int first = 0;
        while (!CPU_ISSET(first, &all))
            ++first;
        CPU_ZERO(&wanted);
        CPU_SET(first, &wanted);
    }
    sched_setaffinity(0, sizeof(wanted), &wanted);
}
