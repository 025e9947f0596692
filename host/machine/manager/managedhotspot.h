// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_MANAGEDHOTSPOT_H
#define MORVEK_HOSTD_MANAGEDHOTSPOT_H

#include "hotspotcontrol.h"

#include <QtCore/QObject>

namespace morvek {

class EventLog;
class ManagerClient;
class Restoration;
class World;

/*! Has the network manager make a radio an access point. */
class ManagedHotspot : public QObject, public HotspotControl
{
    Q_OBJECT

public:
    /*! All of them must outlive this. */
    ManagedHotspot(ManagerClient *client, Restoration *restoration, World *world, const EventLog *log,
                   QObject *parent = nullptr);
    ~ManagedHotspot() override;

    QJsonObject profile() const override { return m_profile; }
    void setProfile(const QJsonObject &profile) override;
    void start(const QJsonObject &profile, const AnswerCall &answer) override;
    void stop(const AnswerCall &answer) override;

private:
    Q_DISABLE_COPY(ManagedHotspot)

    QJsonObject m_profile;
    ManagerClient *m_client;
    Restoration *m_restoration;
    World *m_world;
    const EventLog *m_log;
};

} // namespace morvek

#endif
