// SPDX-License-Identifier: Apache-2.0
#ifndef RADIOCASE_H
#define RADIOCASE_H

#include "air.h"
#include "daemonclient.h"
#include "networkinterface.h"
#include "networkinterfaceservice.h"
#include "radiomanager.h"
#include "servicepointer.h"
#include "wificonnectionconfig.h"
#include "wifiservice.h"

/*!
 * An application's services on the daemons, which the guest's manager carries out.
 *
 * What either of them logs is kept, since passkeys are looked for there, too.
 */
class RadioCase : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    /*! No passkey has left a trace while a network was joined. */
    void cleanup();

protected:
    void startManager() { m_manager.start(); }
    /*! Starts the daemons, and waits until the services are ready. */
    void begin();
    /*! Ends the daemons in order. */
    void end();
    /*! Ends them at once; they begin on the same root again. */
    void kill();

    /*! Joins \a ssid by \a passkey; an open one when that is empty. The outcome, see Watched. */
    QString join(const char *ssid, const char *passkey);
    /*! Leaves the network, and waits until the radio is idle. */
    void leave();
    /*! The interface of the radio as the application sees it. */
    morvek::NetworkInterface radioInterface() const;
    /*! Its IPv4 addresses; empty when it is not connected. */
    QString radioAddresses() const;
    /*! The names of the processes, logs and files that hold one of \a secrets and are not those of the scene. */
    QByteArrayList placesOf(const QByteArrayList &secrets);

    DaemonFixture &daemon() { return *m_daemon; }
    morvek::WifiService &wifi() { return *m_wifi; }

private:
    RadioManager m_manager;
    std::unique_ptr<DaemonFixture> m_daemon;
    WifiServicePointer m_wifi;
    NetworkInterfaceServicePointer m_interfaces;
    QByteArray m_log;
    QByteArrayList m_traces;
};

#endif
