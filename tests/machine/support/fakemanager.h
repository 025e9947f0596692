// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_FAKEMANAGER_H
#define MORVEK_TEST_FAKEMANAGER_H

#include "busobjects.h"

/*!
 * What NetworkManager shows on the system bus, played by hand.
 *
 *     PrivateBus bus;                                        // once in a test program
 *     FakeManager manager;
 *     const QString wifi = manager.addWifi("wlan0");         // objects are named by their paths
 *     const QString point = manager.addAccessPoint(wifi, "home", {{"Strength", 70}, {"RsnFlags", FakeManager::Wpa2}});
 *     QVERIFY(manager.start());
 *     ...
 *     QVERIFY(manager.waitForCalls("AddAndActivateConnection2"));
 *     manager.calls("AddAndActivateConnection2").first().settings(0)["802-11-wireless"]["ssid"]
 *     manager.setState(wifi, 50);                            // and on to 100 by activate(wifi), or
 *     manager.setState(wifi, 120, 7);                        // failed: no secrets
 *     manager.refuse("RequestScan", "org.freedesktop.NetworkManager.Device.NotAllowed", "Scanning not allowed");
 *     manager.hold("Reapply");                               // which does not return until release("Reapply")
 *     manager.stop();                                        // and start() again
 *
 * It answers calls as the manager does, and stops where time passes there: an activation that was asked for is in state
 * 40, a scan has begun, a reapplied connection has changed no address. What happens then is the test's to play. What
 * it does by itself is documented at each function; setAnswer() replaces it.
 */
class FakeManager : public BusObjects
{
    Q_OBJECT

public:
    /*! RsnFlags: CCMP for both with a passkey; with SAE, that alone, or both. OWE has no passkey. */
    enum Rsn : uint { Wpa2 = 0x188, Wpa3 = 0x488, Wpa2Wpa3 = 0x588, Owe = 0x888 };

    explicit FakeManager(const QString &version = QStringLiteral("1.42.4"));
    ~FakeManager() override;

    static QString managerPath();
    static QString settingsPath();

    /*! A device in state 30, managed, with a carrier; \a properties differ from that. */
    QString addEthernet(const QString &interface, const QVariantMap &properties = {});
    QString addWifi(const QString &interface, const QVariantMap &properties = {});
    /*! A device of another type (DeviceType, such as 11 for a VLAN), whose own interface is \a kind ("Vlan"). */
    QString addDevice(const QString &interface, uint type, const QString &kind, const QVariantMap &kindProperties,
                      const QVariantMap &properties = {});
    void removeDevice(const QString &device);
    QString device(const QString &interface) const;

    /*! In the 2.4 GHz band, open, 50 percent, seen now; \a properties differ from that. */
    QString addAccessPoint(const QString &wifi, const QByteArray &ssid, const QVariantMap &properties = {});
    void removeAccessPoint(const QString &accessPoint);
    /*! The end of a scan: LastScan. */
    void finishScan(const QString &wifi);

    /*! A profile of the machine, or, with flags 0x1 | 0x2 | 0x4, unsaved, generated, volatile. */
    QString addProfile(const BusSettings &settings, uint flags = 0);
    void removeProfile(const QString &profile);
    BusSettings profile(const QString &profile) const;

    /*! As a call of ActivateConnection begins it: state 40, with an active connection, which is returned. */
    QString beginActivation(const QString &device, const QString &profile, const QString &specificObject = slash());
    /*! The states 50, 60, 70, 80, 90 and 100, or what remains of them. */
    void activate(const QString &device);
    /*! As a call of Disconnect does: states 110 and 30. */
    void deactivate(const QString &device, uint reason = 39);
    /*! An activation fails: states 120 and 30. */
    void fail(const QString &device, uint reason);
    /*!
     * A device's state, in the order in which the manager tells it: State, StateReason, StateChanged. The active
     * connection goes along: activating from 40, activated at 100, deactivating at 110; at all others it ends, and with
     * it a volatile profile.
     */
    void setState(const QString &device, uint state, uint reason = 0);
    /*! States and their reasons, before any call is answered. */
    void setStates(const QString &device, const QVector<QPair<uint, uint>> &states);

    /*!
     * "10.0.0.2/24"...; a default route through \a gateway unless that is empty. One configuration is told anew;
     * without addresses it goes.
     */
    void setIp4(const QString &device, const QStringList &addresses, const QString &gateway = QString(),
                uint metric = 100, const QStringList &nameservers = {});
    /*! The DHCP client's options; none for no client. */
    void setLease(const QString &device, const QVariantMap &options);
    /*! What a device has applied: the profile at first, then what the last Reapply had. */
    BusSettings applied(const QString &device) const;
    /*! Of checkpoints that have not been destroyed or rolled back. */
    BusPaths checkpoints() const { return value<BusPaths>(managerPath(), QStringLiteral("Checkpoints")); }

private:
    struct Applied
    {
        BusSettings settings;
        qulonglong version;
    };
    using Handler = BusAnswer (FakeManager::*)(const BusCall &call);

    static QString slash() { return QStringLiteral("/"); }
    QString next(const QString &folder);
    void append(const QString &path, const QString &list, const QString &item);
    void drop(const QString &path, const QString &list, const QString &item);
    void setHandler(const QString &member, Handler handler);
    void endActivation(const QString &device);
    void onSenderGone(const QString &sender);

    BusAnswer addAndActivate(const BusCall &call);
    BusAnswer activateConnection(const BusCall &call);
    BusAnswer deactivateConnection(const BusCall &call);
    BusAnswer addConnection(const BusCall &call);
    BusAnswer getSettings(const BusCall &call);
    BusAnswer getSecrets(const BusCall &call);
    BusAnswer updateProfile(const BusCall &call);
    BusAnswer deleteObject(const BusCall &call);
    BusAnswer disconnectDevice(const BusCall &call);
    BusAnswer getAppliedConnection(const BusCall &call);
    BusAnswer reapply(const BusCall &call);
    BusAnswer createCheckpoint(const BusCall &call);
    BusAnswer endCheckpoint(const BusCall &call);
    BusAnswer getAccessPoints(const BusCall &call);
    BusAnswer getDevice(const BusCall &call);
    BusAnswer getPermissions(const BusCall &call);
    BusAnswer nothing(const BusCall &call);

    int m_last = 0;
    QHash<QString, BusSettings> m_profiles;
    QHash<QString, Applied> m_applied;
    QHash<QString, QString> m_boundTo;
};

#endif
