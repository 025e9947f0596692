// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_INTERFACECOMMAND_H
#define MORVEK_INTERFACECOMMAND_H

#include "command.h"

#include <networkinterface.h>

#include <QtCore/QTimer>

namespace morvek {

class NetworkInterfaceService;

/*! The name of an interface, completed from those that are there. */
Word interfaceWord();
/*! --json, --wait and --timeout, which every command of this kind takes. */
std::vector<Option> interfaceOptions();

/*! A command that needs the network interface service. */
class InterfaceCommand : public Command
{
    Q_OBJECT

public:
    explicit InterfaceCommand(const CommandLine &line);
    ~InterfaceCommand() override;

    void start() override;

protected:
    /*! Called once, when the service is ready. */
    virtual void run() = 0;
    NetworkInterfaceService *service() const { return m_service.get(); }
    bool json() const { return m_json; }

    /*! What is said, and what the command ends with, when the time is up from now on. Nothing is said when empty. */
    void setOverdue(const QString &sentence, ExitCode code = TimedOut);
    /*! Looks \a name up. Ends the command, with a complaint, and returns false when there is none. */
    bool find(const QString &name, NetworkInterface *networkInterface);
    /*! Ends the command; later calls do nothing. */
    void finish(ExitCode code);

private:
    struct DeleteService
    {
        void operator()(NetworkInterfaceService *service) const;
    };

    void tryService();
    void onTimeout();

    std::unique_ptr<NetworkInterfaceService, DeleteService> m_service;
    QTimer m_timeout;
    QTimer m_retry;
    QString m_overdue;
    ExitCode m_overdueCode = TimedOut;
    bool m_json;
    bool m_wait;
    bool m_finished = false;
};

} // namespace morvek

#endif
