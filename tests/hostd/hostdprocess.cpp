// SPDX-License-Identifier: Apache-2.0
#include "hostdprocess.h"

#include "patience.h"

HostdProcess::~HostdProcess()
{
    kill();
}

QString HostdProcess::program()
{
    return QStringLiteral(MORVEK_HOSTD);
}

HostdProcess::Ended HostdProcess::run(const QStringList &arguments, const QString &root)
{
    ChildProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!root.isEmpty())
        environment.insert(QStringLiteral("ZOP_ROOT"), root);
    process.setProcessEnvironment(environment);
    process.start(program(), arguments);
    Ended ended;
    if (process.waitForFinished(Patience) && process.exitStatus() == QProcess::NormalExit)
        ended.code = process.exitCode();
    else
        process.kill();
    ended.output = process.readAllStandardOutput();
    ended.errors = process.readAllStandardError();
    return ended;
}

bool HostdProcess::start(const QString &root, const QStringList &arguments)
{
    m_process.start(program(), QStringList {QStringLiteral("--root"), root} + arguments);
    while (!output().contains('\n')) {
        if (!m_process.waitForReadyRead(Patience))
            return false;
    }
    return true;
}

int HostdProcess::terminate()
{
    m_process.terminate();
    return waitForEnd();
}

int HostdProcess::waitForEnd()
{
    if (!m_process.waitForFinished(Patience) || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    return m_process.exitCode();
}

void HostdProcess::kill()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(Patience);
}
