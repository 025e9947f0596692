// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SYSTEMNETWORK_H
#define MORVEK_HOSTD_SYSTEMNETWORK_H

#include "attributes.h"
#include "interfacecontrol.h"
#include "kernelbell.h"

#include <QtCore/QObject>

namespace morvek {

class EventLog;
class World;

/*! Keeps the world like the network interfaces of the machine, which it never changes. */
class SystemNetwork : public QObject, public InterfaceControl
{
    Q_OBJECT

public:
    /*! \a world and \a log must outlive the network. */
    SystemNetwork(World *world, const EventLog *log, QObject *parent = nullptr);
    ~SystemNetwork() override;

    /*! Fills the world, and follows the machine from then on. */
    bool start(QString *error);

    void carryOut(const NetworkingRequest &request, const AnswerCall &answer) override;

private:
    Q_DISABLE_COPY(SystemNetwork)
    void onBell();
    bool mirror(QString *error);

    World *m_world;
    const EventLog *m_log;
    KernelBell m_bell;
};

} // namespace morvek

#endif
