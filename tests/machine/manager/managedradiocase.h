// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_MANAGEDRADIOCASE_H
#define MORVEK_TEST_MANAGEDRADIOCASE_H

#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "fakemanager.h"
#include "privatebus.h"
#include "servicepointer.h"
#include "watched.h"
#include "wificonnectionconfig.h"
#include "wifiservice.h"

/*!
 * The daemons over a manager that is played, with the radio wlan0 and a network "House" with a passkey, whose access
 * points are 0a:00:00:00:00:01 and, when it comes into sight, 0a:00:00:00:00:02; "Guest" is open, at ...:03.
 */
class ManagedRadioCase : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

protected:
    using Connect = Watched<morvek::AsyncWifiConnectOperation>;
    using Scan = Watched<morvek::AsyncWifiScanOperation>;

    void startDaemons(const QStringList &arguments = {});
    QString addAccessPoint(const char *ssid, int number, uint rsn, uint percent = 50);
    /*! The station is in the user's own network. */
    QString joinAsTheUser(const char *ssid, const QString &accessPoint);

    morvek::AsyncWifiConnectOperation *connectTo(const char *ssid, const char *passkey);
    /*! The call by which the manager is asked to join, once it has been made \a count times. */
    BusCall join(int count = 1);
    /*! A handshake with a wrong passkey: WPA2. */
    void refusePasskey();
    void fail(uint reason) { m_manager->fail(m_wifi, reason); }
    /*! Waits until the status has been told \a count times since the last forget(); what was told. */
    QStringList told(int count);
    /*! Waits until \a line is the last one that was told since then; what was told. */
    QStringList toldUntil(const QString &line);
    void forget();
    /*! What the device's switch was set to, in order. */
    QList<bool> autoconnects() const;
    QString request(const char *message, const char *dat = nullptr);

    static QString connected(const char *bssid, int identifier, const char *ssid = "House",
                             const char *keyManagement = "WPA2-PSK", const char *cipher = "CCMP");
    static QString disconnected(const char *bssid, int reason = 3);
    static QString wrongKey(int identifier, const char *ssid = "House");

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeManager> m_manager;
    QString m_wifi;
    QString m_house;
    QString m_guest;
    std::unique_ptr<DaemonFixture> m_daemon;
    WifiServicePointer m_service;
    std::unique_ptr<Seen> m_status;
};

#endif
