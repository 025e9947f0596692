// SPDX-License-Identifier: Apache-2.0
#include "realmanager.h"

#include "patience.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtTest/QtTest>

namespace {

const char *const Configuration = R"([main]
plugins=keyfile
no-auto-default=*
dhcp=internal
dns=none
rc-manager=unmanaged
systemd-resolved=false
hostname-mode=none
auth-polkit=false
[keyfile]
path=%1/profiles
unmanaged-devices=*%2
[connectivity]
enabled=false
)";

void write(const QString &name, const QString &text)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) != text.toUtf8().size())
        qFatal("%s: %s", qPrintable(name), qPrintable(file.errorString()));
}

void end(ChildProcess *process)
{
    if (process && !process->waitForFinished(Patience))
        qFatal("%s does not end", qPrintable(process->program()));
}

} // namespace

RealManager::RealManager(const QStringList &interfaces)
{
    if (folder().isEmpty())
        qFatal("run this by namespaces.sh: it changes networks");
    QDir(folder()).mkpath(QStringLiteral("profiles"));
    QDir(folder()).mkpath(QStringLiteral("empty"));
    QString managed;
    for (const QString &interface : interfaces)
        managed += QStringLiteral(",except:interface-name:") + interface;
    write(folder() + QStringLiteral("/manager.conf"), QString::fromLatin1(Configuration).arg(folder(), managed));
    write(folder() + QStringLiteral("/intern.conf"), QString());
}

RealManager::~RealManager()
{
    kill();
    stopServer();
    if (!QTest::currentTestFailed())
        return;
    QFile log(folder() + QStringLiteral("/manager.log"));
    if (log.open(QIODevice::ReadOnly))
        qInfo("%s", log.readAll().right(20000).constData());
}

bool RealManager::start()
{
    m_process = std::make_unique<ChildProcess>();
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    m_process->setStandardOutputFile(folder() + QStringLiteral("/manager.log"), QIODevice::Append);
    const QString prefix = folder() + QLatin1Char('/');
    m_process->start(
        QStringLiteral("NetworkManager"),
        {QStringLiteral("--debug"), QStringLiteral("--config=%1manager.conf").arg(prefix),
         QStringLiteral("--config-dir=%1empty").arg(prefix), QStringLiteral("--system-config-dir=%1empty").arg(prefix),
         QStringLiteral("--intern-config=%1intern.conf").arg(prefix),
         QStringLiteral("--state-file=%1state").arg(prefix), QStringLiteral("--pid-file=%1manager.pid").arg(prefix)});
    if (!m_process->waitForStarted(Patience))
        return false;
    int code = -1; // also that of nmcli while there is no manager
    const auto isReady = [&code] { return shell("nmcli --terse --fields STARTUP general", &code) == "started"; };
    return QTest::qWaitFor(isReady, Patience) && m_process->state() == QProcess::Running;
}

void RealManager::stop()
{
    if (m_process)
        m_process->terminate();
    end(m_process.get());
    m_process.reset();
}

void RealManager::kill()
{
    if (m_process)
        m_process->kill();
    end(m_process.get());
    m_process.reset();
}

bool RealManager::startServer()
{
    const QString leases = folder() + QStringLiteral("/leases");
    m_server = std::make_unique<ChildProcess>();
    m_server->setProcessChannelMode(QProcess::MergedChannels);
    m_server->start(QStringLiteral("nsenter"),
                    {QStringLiteral("--net=/run/netns/peer"), QStringLiteral("dnsmasq"),
                     // Otherwise it takes another user, and a user's namespace has none.
                     QStringLiteral("--no-daemon"), QStringLiteral("--conf-file=/dev/null"), QStringLiteral("--port=0"),
                     QStringLiteral("--bind-interfaces"), QStringLiteral("--interface=vp0"),
                     QStringLiteral("--interface=vp1"), QStringLiteral("--dhcp-range=10.9.0.100,10.9.0.110,2m"),
                     QStringLiteral("--dhcp-range=10.9.1.100,10.9.1.110,2m"), QStringLiteral("--no-ping"),
                     QStringLiteral("--dhcp-authoritative"), QStringLiteral("--dhcp-leasefile=") + leases});
    QByteArray output;
    while (!output.contains("IP range 10.9.0.100")) {
        if (!m_server->waitForReadyRead(Patience))
            return false;
        output += m_server->readAll();
    }
    return true;
}

void RealManager::stopServer()
{
    if (m_server)
        m_server->kill();
    end(m_server.get());
    m_server.reset();
}

QString RealManager::folder()
{
    return qEnvironmentVariable("BENCH");
}

QByteArray shell(const QByteArray &line, int *code)
{
    ChildProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("sh"), {QStringLiteral("-c"), QString::fromUtf8(line)});
    const bool ended = process.waitForFinished(2 * Patience) && process.exitStatus() == QProcess::NormalExit;
    const QByteArray output = process.readAll();
    if (code)
        *code = ended ? process.exitCode() : -1;
    else if (!ended || process.exitCode() != 0)
        QTest::qFail((line + ": " + output).constData(), __FILE__, __LINE__);
    return output.trimmed();
}
