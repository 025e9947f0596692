// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_MANAGEDHOTSPOT_H
#define MORVEK_HOSTD_MANAGEDHOTSPOT_H

#include "borrowedradio.h"
#include "hotspotcontrol.h"
#include "hotspotinactivity.h"
#include "hotspotprofile.h"

#include <QtCore/QObject>
#include <QtCore/QSet>

namespace morvek {

class EventLog;
class ManagerClient;
class Pace;
class RadioLoan;
class Restoration;
class World;

/*!
 * Has the network manager make a radio an access point, with DHCP and a way out, and drives the tethering status of the
 * world from what becomes of it.
 *
 * One step of the manager's follows the other; what is asked for in between decides where it goes next.
 */
class ManagedHotspot : public QObject, public HotspotControl
{
    Q_OBJECT

public:
    /*! All of them must outlive this; \a loan may be null. \a leases is the folder of the manager's DHCP server. */
    ManagedHotspot(ManagerClient *client, Restoration *restoration, RadioLoan *loan, World *world, const Pace *pace,
                   const EventLog *log, QObject *parent = nullptr,
                   const QString &leases = QStringLiteral("/var/lib/NetworkManager"));
    ~ManagedHotspot() override;

    QJsonObject profile() const override { return m_profile; }
    /*! What runs and has to be another access point for that stops and starts again. */
    void setProfile(const QJsonObject &profile) override;
    void start(const QJsonObject &profile, const AnswerCall &answer) override;
    void stop(const AnswerCall &answer) override;

private:
    Q_DISABLE_COPY(ManagedHotspot)

    enum Step { Down, Asking, Starting, Up, Stopping };

    void begin();
    NMDeviceWifi *takeRadio(Refusal *refusal);
    void ask(NMDeviceWifi *radio);
    void onAsked(NMActiveConnection *active, const Refusal &refusal);
    void deactivate();
    void onRefusedToStop(const Refusal &refusal);
    bool isRight() const;
    void look();
    void onUp();
    void onDown(const Refusal &refusal);
    void onManager(bool running);
    void takeUpAgain();
    void onStateChanged(NMDevice *device, NMDeviceState now, NMDeviceStateReason reason);
    Refusal failure() const;
    void answerAll(QVector<AnswerCall> *answers, const Refusal &refusal) const;
    void sayOnce(const QString &text);
    void tell(bool active);

    QJsonObject m_profile;
    QJsonObject m_running;             // what it runs with, or goes to
    HotspotProfile::Network m_network; // what the manager was asked for
    bool m_wanted = false;             // where it goes to
    Step m_step = Down;
    int m_attempt = 0; // counts what the manager is asked for: an answer to an earlier one is of no interest
    GRef<NMActiveConnection> m_active; // from Starting on
    SignalConnection m_activeNotify;
    NMDeviceStateReason m_reason = NM_DEVICE_STATE_REASON_NONE; // why the radio has left what it was asked for
    QVector<AnswerCall> m_starts;                               // that wait
    QVector<AnswerCall> m_stops;
    ManagerClient *m_client;
    World *m_world;
    const EventLog *m_log;
    Restoration *m_restoration;
    BorrowedRadio m_radio;
    HotspotInactivity m_inactivity;
    QSet<QString> m_said;
};

} // namespace morvek

#endif
