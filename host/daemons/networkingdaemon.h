// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_NETWORKINGDAEMON_H
#define MORVEK_HOSTD_NETWORKINGDAEMON_H

#include "daemon.h"

namespace morvek {

class InterfaceControl;

/*! Publishes the world's interfaces and their status, and answers requests to configure them. */
class NetworkingDaemon : public Daemon
{
    Q_OBJECT

public:
    /*! \a control must outlive the daemon. */
    NetworkingDaemon(InterfaceControl *control, const DaemonTools &tools, QObject *parent = nullptr);
    ~NetworkingDaemon() override;

protected:
    Task read(const ZopChangeset &changes) override;
    bool publish(QString *error) override;
    void follow() override;
    void onLatePublication(const QString &path) override;

private:
    Q_DISABLE_COPY(NetworkingDaemon)

    bool publishInterfaces(QString *error);
    void onInterfaceAdded(const QString &name);
    void onInterfaceRemoved(const QString &name);
    void onInterfaceChanged(const QString &name, const ZopChangeset &changes);

    InterfaceControl *m_control;
};

} // namespace morvek

#endif
