// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_MANAGEDRADIO_H
#define MORVEK_HOSTD_MANAGEDRADIO_H

#include "radiocontrol.h"

#include <QtCore/QObject>

namespace morvek {

class EventLog;
class ManagerClient;
class Restoration;
class World;

/*! Keeps the Wi-Fi status of the world like the first radio of the network manager, and has that one scan and join. */
class ManagedRadio : public QObject, public RadioControl
{
    Q_OBJECT

public:
    /*! All of them must outlive this. */
    ManagedRadio(ManagerClient *client, Restoration *restoration, World *world, const EventLog *log,
                 QObject *parent = nullptr);
    ~ManagedRadio() override;

    void carryOut(const WifiRequest &request, const AnswerCall &answer) override;

private:
    Q_DISABLE_COPY(ManagedRadio)

    ManagerClient *m_client;
    Restoration *m_restoration;
    World *m_world;
    const EventLog *m_log;
};

} // namespace morvek

#endif
