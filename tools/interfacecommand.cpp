// SPDX-License-Identifier: Apache-2.0
#include "interfacecommand.h"

#include "output.h"

#include <networkinterfaceservice.h>
#include <networklibraryexports.h>

namespace morvek {

namespace {

QString notReadySentence()
{
    const QString root = qEnvironmentVariable("ZOP_ROOT");
    const QString place = root.isEmpty() ? QStringLiteral("set ZOP_ROOT to its root (it is not set)")
                                         : QStringLiteral("set ZOP_ROOT to its root (it is \"%1\")").arg(root);
    return QStringLiteral("the networking daemon is not there: start morvek-hostd, or %1, or add --wait").arg(place);
}

QStringList interfaceNames(const NetworkInterfaceService &service)
{
    QStringList names;
    const QList<NetworkInterface> interfaces = service.interfaces();
    for (const NetworkInterface &networkInterface : interfaces)
        names += networkInterface.name();
    return names;
}

} // namespace

Word interfaceWord()
{
    return {QStringLiteral("NAME"), [] { return interfaceNames(NetworkInterfaceService()); }};
}

std::vector<Option> interfaceOptions()
{
    return {
        {QStringLiteral("json"), {}, QStringLiteral("write JSON, for scripts")},
        {QStringLiteral("wait"), {}, QStringLiteral("wait for the networking daemon when it is not there")},
        {QStringLiteral("timeout"), QStringLiteral("SECONDS"),
         QStringLiteral("stop waiting after that time, for whatever it is; for ever when not given")},
    };
}

InterfaceCommand::InterfaceCommand(const CommandLine &line)
    : m_json(line.has(QStringLiteral("json"))),
      m_wait(line.has(QStringLiteral("wait")))
{
    m_timeout.setSingleShot(true);
    m_timeout.setInterval(line.timeout);
    connect(&m_timeout, &QTimer::timeout, this, &InterfaceCommand::onTimeout);
    setOverdue(QStringLiteral("the networking daemon is still not there"));

    // A service that is not ready never becomes so: each try takes a new one.
    m_retry.setInterval(100);
    connect(&m_retry, &QTimer::timeout, this, &InterfaceCommand::tryService);
}

InterfaceCommand::~InterfaceCommand() = default;

void InterfaceCommand::start()
{
    if (m_timeout.interval() >= 0)
        m_timeout.start();
    tryService();
}

void InterfaceCommand::tryService()
{
    m_service.reset(newNetworkInterfaceService());
    if (m_service->ready()) {
        m_retry.stop();
        run();
    } else if (m_wait) {
        m_retry.start();
    } else {
        complain(notReadySentence());
        finish(NotReady);
    }
}

void InterfaceCommand::onTimeout()
{
    if (!m_overdue.isEmpty())
        complain(QStringLiteral("the time is up: %1").arg(m_overdue));
    finish(m_overdueCode);
}

void InterfaceCommand::setOverdue(const QString &sentence, ExitCode code)
{
    m_overdue = sentence;
    m_overdueCode = code;
}

bool InterfaceCommand::find(const QString &name, NetworkInterface *networkInterface)
{
    const QList<NetworkInterface> interfaces = m_service->interfaces();
    for (const NetworkInterface &candidate : interfaces) {
        if (candidate.name() == name) {
            *networkInterface = candidate;
            return true;
        }
    }
    const QString known = interfaceNames(*m_service).join(QLatin1String(", "));
    complain(QStringLiteral("there is no interface \"%1\": %2")
                 .arg(name,
                      known.isEmpty() ? QStringLiteral("there is none at all at the moment")
                                      : QStringLiteral("use one of %1").arg(known)));
    finish(UnknownInterface);
    return false;
}

void InterfaceCommand::finish(ExitCode code)
{
    if (m_finished)
        return;
    m_finished = true;
    m_timeout.stop();
    m_retry.stop();
    // The service may have more to tell before the event loop ends.
    if (m_service)
        m_service->disconnect(this);
    Q_EMIT finished(code);
}

void InterfaceCommand::DeleteService::operator()(NetworkInterfaceService *service) const
{
    deleteNetworkInterfaceService(&service);
}

} // namespace morvek
