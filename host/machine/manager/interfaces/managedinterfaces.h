// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_MANAGEDINTERFACES_H
#define MORVEK_HOSTD_MANAGEDINTERFACES_H

#include "attributes.h"
#include "gobject.h"
#include "interfacecontrol.h"
#include "networkingrequest.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QQueue>
#include <QtCore/QTimer>

#include <map>

namespace morvek {

class EventLog;
class ManagerClient;
class Restoration;
class World;

/*!
 * Keeps the world's interfaces like the network manager's devices, and has it configure them: it applies other IPv4
 * settings to what is connected, and leaves the profiles as they are.
 */
class ManagedInterfaces : public QObject, public InterfaceControl
{
    Q_OBJECT

public:
    /*! All of them must outlive this. */
    ManagedInterfaces(ManagerClient *client, Restoration *restoration, World *world, const EventLog *log,
                      QObject *parent = nullptr);
    ~ManagedInterfaces() override;

    void carryOut(const NetworkingRequest &request, const AnswerCall &answer) override;

private:
    Q_DISABLE_COPY(ManagedInterfaces)

    struct Order
    {
        NetworkingRequest request;
        AnswerCall answer; // none when it was answered and carried out before, and the manager has lost it since
    };

    /*! What is known of an interface beside what the manager says. */
    struct Station
    {
        QQueue<Order> orders;      // the first is under way
        bool isActivating = false; // the profile that the first order is to be applied to
        bool isRetried = false;    // the first order: somebody else has changed the settings meanwhile
        bool hasWish = false;      // the last order that was carried out holds:
        NetworkingRequest wish {ZopChangeset()};
        QByteArray uuid;             // of the connection that it was applied to
        bool isMade = false;         // that connection, for it
        GRef<NMSettingIPConfig> own; // the settings of that connection before the first order
        bool isAwaited = false;      // addresses have to go or to come yet, as the last order says
        bool isLost = false;         // the connection, and with it what was applied
        int step = 0;                // counts orders, so that nothing late is told of an earlier one
    };

    // Steps of the first order of an interface:
    void begin(const QString &name);
    void readApplied(const QString &name);
    void reapply(const QString &name, NMConnection *present, guint64 version);
    void activate(const QString &name, NMDevice *device);
    void followActivation(const QString &name, NMDevice *device, bool isOver, NMDeviceStateReason reason);
    void make(const QString &name, NMDevice *device);
    void finish(const QString &name, const Refusal &refusal, NMConnection *applied = nullptr);

    void await(const QString &name, const NetworkingRequest &request, int dhcpTimeout);
    void tellRelease(const QString &name);
    void tellNoLease(const QString &name, int step);
    void onRunningChanged(bool running);
    void onStateChanged(NMDevice *device, NMDeviceState now, NMDeviceState before, NMDeviceStateReason reason);
    static void lose(Station *station);
    void takeUp(const QString &name, Station *station, NMDevice *device);
    void synchronise();
    Attributes attributesOf(const QString &name, NMDevice *device);
    bool isLeaseKept(const QString &name, const Attributes &now);
    QString preferred() const;
    bool isSpared(const QString &interface) const;
    void rank();

    ManagerClient *m_client;
    Restoration *m_restoration;
    World *m_world;
    const EventLog *m_log;
    std::map<QString, Station> m_stations;
    QTimer m_settling; // runs while the manager, which is back, finds its devices
    QTimer m_grace;    // runs while this interface, which is preferred, may be without its route:
    QString m_spared;
    QHash<QString, QDeadlineTimer> m_keptLeases; // by interface
};

} // namespace morvek

#endif
