// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SERVICECOMMAND_H
#define MORVEK_SERVICECOMMAND_H

#include "command.h"
#include "daemonwatch.h"

#include <QtCore/QTimer>

#include <optional>

namespace morvek {

class ServiceBase;

/*! How long, in milliseconds, a service may need that becomes ready from the event loop. */
constexpr int EventLoopPatience = 1000;
/*! How long is waited, in milliseconds, for a change that was asked for. */
constexpr int ChangeTime = 10000;
/*! \a milliseconds as the help tells them. */
QString inSeconds(int milliseconds);

/*! --verbose. */
const Option &verboseOption();
/*! --json, --wait, --timeout and --verbose, which every command of this kind takes. */
std::vector<Option> serviceOptions();
/*! \a own, and those. */
std::vector<Option> withServiceOptions(std::vector<Option> own);

/*! A command that needs a service of the library, and thus the daemon behind it. */
class ServiceCommand : public Command
{
    Q_OBJECT

public:
    void start() override;

protected:
    /*!
     * A service that is not ready \a patience milliseconds after it was made does not become so any more; the next one
     * is given \a growth times that.
     */
    ServiceCommand(const CommandLine &line, const QString &daemon, int patience, int growth = 1);

    /*! Puts a new service into the place of the present one, and returns it. */
    virtual ServiceBase *renewService() = 0;
    /*! Called once, when the service is ready. */
    virtual void run() = 0;
    /*! Called when the time is up, before that is told: stops what is under way. */
    virtual void withdraw();
    /*! Called when the time is up: tells that, and ends the command. */
    virtual void onTimeUp();
    /*! Called when the daemon dies while the command runs. Ends the command with a complaint. */
    virtual void onDaemonDied();
    /*! What follows that complaint. */
    virtual QString stateAtDeath() const;
    /*! Called when it is there again. Does nothing. */
    virtual void onDaemonReturned();

    bool json() const { return m_json; }
    /*! What is said, and what the command ends with, when the time is up from now on. Nothing is said when empty. */
    void setOverdue(const QString &sentence, ExitCode code = TimedOut);
    QString overdue() const { return m_overdue; }
    /*! From now on the command has \a milliseconds, -1 for any time, unless --timeout rules. */
    void setDeadline(int milliseconds);
    /*! Ends the command; later calls do nothing. */
    void finish(ExitCode code);
    /*!
     * Stops what is under way, and ends the command with a complaint, which tells that the daemon is dead when it is.
     * Does nothing when the command has ended.
     */
    void fail(const QString &sentence, ExitCode code = Failed);
    bool isFinished() const { return m_finished; }
    /*! "the networking daemon has died" and so on. */
    QString deathSentence() const;
    /*! "the networking daemon is there again" and so on. */
    QString returnSentence() const;

private:
    bool close();
    void tryService();
    void onReady();
    void onNotReady();

    const QString m_daemon;
    const int m_growth;
    ServiceBase *m_service = nullptr;
    std::optional<DaemonWatch> m_watch;
    QTimer m_timeout;
    QTimer m_patience;
    QString m_overdue;
    ExitCode m_overdueCode = TimedOut;
    int m_verbosity;
    bool m_json;
    bool m_wait;
    bool m_hasTimeout;
    bool m_running = false;
    bool m_finished = false;
};

/*! A command that needs the service which \a create and \a destroy make and delete. */
template<typename Service, Service *(*create)(), void (*destroy)(Service **)>
class CommandWith : public ServiceCommand
{
protected:
    using ServiceCommand::ServiceCommand;
    Service *service() const { return m_service.get(); }

private:
    struct Delete
    {
        void operator()(Service *service) const { destroy(&service); }
    };

    ServiceBase *renewService() override
    {
        m_service.reset(create());
        return m_service.get();
    }

    std::unique_ptr<Service, Delete> m_service;
};

template<typename Made>
std::unique_ptr<Command> createFrom(const CommandLine &line, QString *)
{
    return std::make_unique<Made>(line);
}

} // namespace morvek

#endif
