// SPDX-License-Identifier: Apache-2.0
#include "stormprocess.h"

#include "patience.h"

#include <QtCore/QFile>

#include <csignal>

namespace {

QString programOf(StormProcess::Kind kind)
{
    switch (kind) {
    case StormProcess::Application:
        return QStringLiteral(STORM_APPLICATION);
    case StormProcess::Peer:
        return QStringLiteral(STORM_PEER);
    default:
        return QStringLiteral(MORVEK_HOSTD);
    }
}

} // namespace

StormProcess::StormProcess(Kind kind, const QString &name, const QString &root)
    : m_kind(kind),
      m_name(name),
      m_root(root)
{
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &StormProcess::read);
}

StormProcess::~StormProcess()
{
    kill();
}

void StormProcess::start(const QStringList &arguments, int speed)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZOP_ROOT"), m_root);
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    m_process.setProcessEnvironment(environment);
    m_killed = false;
    QStringList all = arguments;
    if (m_kind == Daemons)
        all << QStringLiteral("--root") << m_root << QStringLiteral("--speed") << QString::number(speed);
    m_process.start(programOf(m_kind), all);
    m_process.waitForStarted(Patience);
}

void StormProcess::send(const QString &line)
{
    m_process.write(line.toUtf8() + '\n');
}

QString StormProcess::ask(const QString &line, const QString &answer)
{
    const int from = heard();
    send(line);
    return wait(answer, from);
}

QString StormProcess::wait(const QString &start, int from)
{
    QString found;
    waitUntil([&] {
        found = find(start, from);
        return !found.isNull() || m_process.state() == QProcess::NotRunning;
    });
    return found;
}

QString StormProcess::find(const QString &start, int from) const
{
    for (int i = from; i < m_lines.size(); ++i) {
        if (m_lines[i].startsWith(start)) {
            const QString rest = m_lines[i].mid(start.size()).trimmed();
            return rest.isNull() ? QStringLiteral("") : rest; // null says that there is no such line
        }
    }
    return QString();
}

bool StormProcess::answers()
{
    const QString text = QStringLiteral("%1").arg(++m_pings);
    return !ask(QStringLiteral("ping ") + text, QStringLiteral("pong ") + text).isNull();
}

void StormProcess::kill()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    // It may have crashed just before.
    m_killed = waitForEnd() && m_process.exitStatus() == QProcess::CrashExit && m_process.exitCode() == SIGKILL;
}

void StormProcess::signal(int number) const
{
    if (processId() > 0)
        ::kill(pid_t(processId()), number);
}

bool StormProcess::end()
{
    if (m_process.state() == QProcess::NotRunning)
        return trouble().isEmpty();
    if (m_kind == Daemons)
        m_process.terminate();
    else
        m_process.closeWriteChannel();
    return endsAlone(0);
}

bool StormProcess::endsAlone(int code)
{
    m_killed = true; // asked for, so that only its code tells
    const bool ended = waitForEnd() && m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == code;
    return ended && trouble().isEmpty();
}

QString StormProcess::trouble()
{
    if (m_process.state() == QProcess::NotRunning && !m_killed)
        return QStringLiteral("%1 has ended with %2 %3: %4")
            .arg(m_name,
                 m_process.exitStatus() == QProcess::CrashExit ? QStringLiteral("signal") : QStringLiteral("code"))
            .arg(m_process.exitCode())
            .arg(QString::fromLocal8Bit(errors().right(3000)));
    for (const char *report : {"ERROR: ", "WARNING: ThreadSanitizer", "runtime error", "ASSERT", "terminate called"}) {
        const int at = errors().indexOf(report);
        if (at != -1)
            return QStringLiteral("%1 reports: %2").arg(m_name, QString::fromLocal8Bit(errors().mid(at, 3000)));
    }
    return QString();
}

QByteArray StormProcess::errors()
{
    return m_errors += m_process.readAllStandardError();
}

void StormProcess::read()
{
    while (m_process.canReadLine())
        m_lines << QString::fromUtf8(m_process.readLine().chopped(1));
}

bool StormProcess::waitForEnd()
{
    return waitUntil([this] { return m_process.state() == QProcess::NotRunning; });
}
