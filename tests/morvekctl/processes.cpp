// SPDX-License-Identifier: Apache-2.0
#include "processes.h"

#include <QtCore/QDateTime>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QRegularExpression>

#include <csignal>
#include <sys/types.h>

namespace morvek {

namespace {

constexpr int Minute = 60000;

QProcessEnvironment environmentFor(const QString &root)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZOP_ROOT"), root);
    environment.remove(QStringLiteral("KREL_VERBOSITY"));
    return environment;
}

int exitCode(const QProcess &process)
{
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

ToolResult resultOf(QProcess *process)
{
    if (!process->waitForFinished(Minute))
        return {};
    return {exitCode(*process), QString::fromUtf8(process->readAllStandardOutput()),
            QString::fromUtf8(process->readAllStandardError())};
}

} // namespace

ToolResult runTool(const QString &root, const QStringList &arguments, const QStringList &variables,
                   const QByteArray &input)
{
    QProcessEnvironment environment = environmentFor(root);
    for (const QString &variable : variables)
        environment.insert(variable.section(QLatin1Char('='), 0, 0), variable.section(QLatin1Char('='), 1));
    ChildProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(MORVEKCTL), arguments);
    process.write(input);
    process.closeWriteChannel();
    return resultOf(&process);
}

ToolResult runWithClosedInput(const QString &root, const QString &arguments)
{
    ChildProcess process;
    process.setProcessEnvironment(environmentFor(root));
    process.start(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("exec \"$0\" %1 <&-").arg(arguments), QStringLiteral(MORVEKCTL)});
    return resultOf(&process);
}

QString complaintLine(const QString &arguments, const QString &sentence, int exitCode, const QString &code)
{
    if (!arguments.contains(QLatin1String("--json")))
        return QStringLiteral("morvekctl: %1\n").arg(sentence);
    const QString text = QString(sentence).replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QStringLiteral("{\"code\":%1,\"exitCode\":%2,\"message\":\"%3\"}\n").arg(code).arg(exitCode).arg(text);
}

LineProcess::LineProcess(const QString &program, const QString &root)
{
    m_process.setProgram(program);
    m_process.setProcessEnvironment(environmentFor(root));
}

LineProcess::~LineProcess()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(Minute);
}

void LineProcess::writeTo(const QString &file)
{
    m_process.setStandardOutputFile(file);
}

void LineProcess::start(const QStringList &arguments)
{
    m_process.setArguments(arguments);
    m_process.start();
}

QString LineProcess::nextLine()
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(Minute))
            return QString();
    }
    return QString::fromUtf8(m_process.readLine()).chopped(1);
}

void LineProcess::feed(const QByteArray &bytes)
{
    m_process.write(bytes);
    m_process.waitForBytesWritten(Minute);
    m_process.closeWriteChannel();
}

void LineProcess::signal(int signal)
{
    ::kill(pid_t(m_process.processId()), signal);
}

int LineProcess::wait()
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(Minute))
        return -2;
    return exitCode(m_process);
}

QString LineProcess::errors()
{
    return QString::fromUtf8(m_process.readAllStandardError());
}

Tool::Tool(const QString &root)
    : LineProcess(QStringLiteral(MORVEKCTL), root)
{
}

QString Tool::nextEvent()
{
    static const QRegularExpression form(QStringLiteral("\\A\\d\\d:\\d\\d:\\d\\d\\.\\d{3}  (.*)\\z"));
    const QRegularExpressionMatch match = form.match(nextLine());
    return match.hasMatch() ? match.captured(1) : QString();
}

QJsonObject Tool::nextEventObject()
{
    QJsonObject object = QJsonDocument::fromJson(nextLine().toUtf8()).object();
    const QString time = object.take(QLatin1String("time")).toString();
    const bool isTime = time.endsWith(QLatin1Char('Z')) && QDateTime::fromString(time, Qt::ISODateWithMs).isValid();
    return isTime ? object : QJsonObject();
}

Daemon::Daemon(const QString &root)
    : LineProcess(QStringLiteral(MORVEK_HOSTD), root)
{
}

bool Daemon::publish(const QString &scenario, const QStringList &arguments)
{
    const QString file = QStringLiteral(SCENARIOS "/%1.json").arg(scenario);
    start(QStringList {QStringLiteral("--scenario"), QFileInfo::exists(file) ? file : scenario} + arguments);
    return nextLine().startsWith(QLatin1String("ready: "));
}

} // namespace morvek
