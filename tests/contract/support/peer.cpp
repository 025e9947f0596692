// SPDX-License-Identifier: Apache-2.0
#include "peer.h"

#include "contracttest.h"

Peer::Peer(const QStringList &environment)
{
    if (!environment.isEmpty()) {
        QProcessEnvironment changed = QProcessEnvironment::systemEnvironment();
        for (const QString &entry : environment)
            changed.insert(entry.section(QLatin1Char('='), 0, 0), entry.section(QLatin1Char('='), 1));
        m_process.setProcessEnvironment(changed);
    }
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &Peer::read);
    m_process.start(QStringLiteral(CONTRACT_PEER), QStringList());
}

Peer::~Peer()
{
    if (m_process.state() != QProcess::NotRunning)
        kill();
}

void Peer::send(const QString &line)
{
    m_process.write(line.toUtf8() + '\n');
}

bool Peer::ask(const QString &line, const QString &answer)
{
    const int seen = m_lines.size();
    send(line);
    return waitUntil([&] { return m_lines.indexOf(answer, seen) != -1; });
}

bool Peer::wait(const QString &line)
{
    return waitUntil([&] { return m_lines.contains(line); });
}

QStringList Peer::heard(const QString &start) const
{
    QStringList result;
    for (const QString &line : m_lines) {
        if (line.startsWith(start))
            result << line.mid(start.size());
    }
    return result;
}

QByteArray Peer::standardError()
{
    return m_process.readAllStandardError();
}

void Peer::kill()
{
    m_process.kill();
    waitForEnd();
}

bool Peer::quit()
{
    send(QStringLiteral("quit"));
    return waitForEnd();
}

bool Peer::waitForEnd()
{
    // The event loop turns, as the test may be what the process waits for.
    return waitUntil([this] { return m_process.state() == QProcess::NotRunning; });
}

void Peer::read()
{
    while (m_process.canReadLine())
        m_lines << QString::fromUtf8(m_process.readLine().chopped(1));
}

bool serve(Peer &daemon)
{
    return daemon.ask(QStringLiteral("serve s ") + testPath("control"), QStringLiteral("s open"));
}

bool openClient(Peer &client)
{
    return client.ask(QStringLiteral("open c %1 2").arg(testPath("control")), QStringLiteral("c open"));
}
