// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_REALMANAGER_H
#define MORVEK_TEST_REALMANAGER_H

#include "childprocess.h"
#include "privatebus.h"

#include <memory>

/*!
 * A real network manager on a bus of its own, and a DHCP server at the other ends of vt0 and vt1, which are those of
 * namespaces.sh: a program with this fixture runs there, or in a guest of its own, and nowhere else. The server gives
 * the addresses 10.9.0.100 to 10.9.0.110 on vt0, and 10.9.1.100 to 10.9.1.110 on vt1, and itself as gateway.
 *
 * The manager has no profiles, connects nothing by itself, keeps its files below folder(), and leaves other interfaces
 * alone.
 */
class RealManager
{
public:
    /*! With \a interfaces, which may end with a star. */
    explicit RealManager(const QStringList &interfaces = {QStringLiteral("vt*")});
    ~RealManager();

    /*! Starts it, and waits until it knows its interfaces. */
    bool start();
    /*! Ends it as a machine does that is shut down, or at once. Interfaces stay as they are. */
    void stop();
    void kill();
    qint64 processId() const { return m_process->processId(); }

    bool startServer();
    void stopServer();

    /*! With the logs, manager.log and dhcp.log, and the profiles, profiles/. */
    static QString folder();

private:
    Q_DISABLE_COPY(RealManager)
    PrivateBus m_bus;
    std::unique_ptr<ChildProcess> m_process;
    std::unique_ptr<ChildProcess> m_server;
};

/*! What a line of shell writes; its exit code in \a code, else a code that is not 0 fails the test. */
QByteArray shell(const QByteArray &line, int *code = nullptr);

#endif
