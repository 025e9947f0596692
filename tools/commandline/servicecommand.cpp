// SPDX-License-Identifier: Apache-2.0
#include "servicecommand.h"

#include "output.h"
#include "rootstate.h"

#include <krellogger.h>
#include <servicebase.h>

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

constexpr int LeastPatience = 100;
constexpr int DeathTime = 50;

QString notReadySentence(const QString &daemon)
{
    const QString lack = RootState::look().lack;
    if (!lack.isEmpty())
        return QStringLiteral("the %1 daemon is not there: %2, or add --wait").arg(daemon, lack);
    const QString root = qEnvironmentVariable("ZOP_ROOT");
    const QString place = root.isEmpty() ? QStringLiteral("set ZOP_ROOT to its root (it is not set)")
                                         : QStringLiteral("set ZOP_ROOT to its root (it is \"%1\")").arg(root);
    return QStringLiteral("the %1 daemon is not there: start morvek-hostd, or %2, or add --wait").arg(daemon, place);
}

} // namespace

const Option &verboseOption()
{
    static const Option option {QStringLiteral("verbose"), {}, QStringLiteral("show what the library logs, too")};
    return option;
}

std::vector<Option> serviceOptions()
{
    return {
        {QStringLiteral("json"), {}, QStringLiteral("write JSON, for scripts")},
        {QStringLiteral("wait"), {}, QStringLiteral("wait for the daemon when it is not there")},
        {QStringLiteral("timeout"), QStringLiteral("SECONDS"),
         QStringLiteral("stop waiting after that time, for whatever it is")},
        verboseOption(),
    };
}

std::vector<Option> withServiceOptions(std::vector<Option> own)
{
    const std::vector<Option> common = serviceOptions();
    own.insert(own.end(), common.begin(), common.end());
    return own;
}

ServiceCommand::ServiceCommand(const CommandLine &line, const QString &daemon, int patience, int growth)
    : m_daemon(daemon),
      m_growth(growth),
      m_verbosity(KrelLogger::getVerbosity()),
      m_json(line.has(QStringLiteral("json"))),
      m_wait(line.has(QStringLiteral("wait"))),
      m_hasTimeout(line.timeout >= 0)
{
    m_timeout.setSingleShot(true);
    m_timeout.setInterval(line.timeout);
    connect(&m_timeout, &QTimer::timeout, this, &ServiceCommand::onTimeUp);
    setOverdue(QStringLiteral("the %1 daemon is still not there").arg(daemon));

    m_patience.setSingleShot(true);
    m_patience.setInterval(m_wait ? std::max(patience, LeastPatience) : patience);
    connect(&m_patience, &QTimer::timeout, this, &ServiceCommand::onNotReady);
}

void ServiceCommand::start()
{
    const QString fault = RootState::look().fault;
    if (!fault.isEmpty()) {
        complain(fault);
        finish(NotReady);
        return;
    }
    if (m_hasTimeout)
        m_timeout.start();
    tryService();
}

void ServiceCommand::tryService()
{
    m_service = renewService();
    connect(m_service, &ServiceBase::readyChanged, this, &ServiceCommand::onReady);
    m_patience.start();
    if (m_service->ready())
        onReady();
}

void ServiceCommand::onReady()
{
    if (std::exchange(m_running, true))
        return;
    m_patience.stop();
    KrelLogger::setVerbosity(m_verbosity);
    m_watch.emplace(m_daemon);
    connect(&*m_watch, &DaemonWatch::died, this, &ServiceCommand::onDaemonDied);
    connect(&*m_watch, &DaemonWatch::returned, this, &ServiceCommand::onDaemonReturned);
    run();
}

void ServiceCommand::onNotReady()
{
    if (m_wait) {
        KrelLogger::setVerbosity(0); // the library has said what is wrong; it would say so at each try
        m_patience.setInterval(m_patience.interval() * m_growth);
        tryService();
        return;
    }
    complain(notReadySentence(m_daemon));
    finish(NotReady);
}

void ServiceCommand::onTimeUp()
{
    withdraw();
    if (!m_overdue.isEmpty())
        complain(QStringLiteral("the time is up: %1").arg(m_overdue));
    finish(m_overdueCode);
}

void ServiceCommand::withdraw() { }

void ServiceCommand::onDaemonDied()
{
    // What has not been answered yet is refused at the same time, which tells more.
    QTimer::singleShot(DeathTime, this, [this] {
        if (isFinished())
            return;
        withdraw();
        complain(deathSentence() + QLatin1String(", and with it what was asked of it") + stateAtDeath());
        finish(Failed);
    });
}

QString ServiceCommand::stateAtDeath() const
{
    return QString();
}

void ServiceCommand::onDaemonReturned() { }

void ServiceCommand::setOverdue(const QString &sentence, ExitCode code)
{
    m_overdue = sentence;
    m_overdueCode = code;
}

void ServiceCommand::setDeadline(int milliseconds)
{
    if (m_hasTimeout || m_finished)
        return;
    if (milliseconds < 0)
        m_timeout.stop();
    else
        m_timeout.start(milliseconds);
}

void ServiceCommand::finish(ExitCode code)
{
    if (close())
        Q_EMIT finished(code);
}

void ServiceCommand::fail(const QString &sentence, ExitCode code)
{
    if (isFinished())
        return;
    withdraw();
    close();
    const auto end = [this, sentence, code] {
        const bool hasDied = m_watch && m_watch->hasDied();
        complain(hasDied ? sentence + QStringLiteral(" (%1)").arg(deathSentence()) : sentence);
        Q_EMIT finished(code);
    };
    // A dying daemon lets its requests go a moment before its control object.
    if (m_watch)
        QTimer::singleShot(DeathTime, this, end);
    else
        end();
}

/*! From now on nothing is waited for; false when that is so already. */
bool ServiceCommand::close()
{
    if (std::exchange(m_finished, true))
        return false;
    m_timeout.stop();
    m_patience.stop();
    // The service may have more to tell before the event loop ends.
    if (m_service)
        m_service->disconnect(this);
    return true;
}

QString ServiceCommand::deathSentence() const
{
    return QStringLiteral("the %1 daemon has died").arg(m_daemon);
}

QString ServiceCommand::returnSentence() const
{
    return QStringLiteral("the %1 daemon is there again").arg(m_daemon);
}

QString inSeconds(int milliseconds)
{
    return QStringLiteral("%1 seconds").arg(milliseconds / 1000);
}

} // namespace morvek
