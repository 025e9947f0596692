// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_MANAGEDINTERFACES_H
#define MORVEK_HOSTD_MANAGEDINTERFACES_H

#include "interfacecontrol.h"

#include <QtCore/QObject>

namespace morvek {

class EventLog;
class ManagerClient;
class Restoration;
class World;

/*! Keeps the world's interfaces like the network manager's devices, and has it configure them. */
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

    ManagerClient *m_client;
    Restoration *m_restoration;
    World *m_world;
    const EventLog *m_log;
};

} // namespace morvek

#endif
