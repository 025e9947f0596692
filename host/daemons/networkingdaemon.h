// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_NETWORKINGDAEMON_H
#define MORVEK_HOSTD_NETWORKINGDAEMON_H

#include "objectpublisher.h"
#include "pace.h"
#include "refusal.h"

#include <QtCore/QObject>

namespace morvek {

class EventLog;
class FaultPlan;
class InterfaceControl;
class World;
class ZopObject;
struct Fault;
struct NetworkingRequest;

/*! Publishes the world's interfaces and their status, and answers requests to configure them. */
class NetworkingDaemon : public QObject
{
    Q_OBJECT

public:
    /*! Everything that is passed must outlive the daemon. */
    NetworkingDaemon(World *world, InterfaceControl *control, FaultPlan *faults, Pace *pace, const EventLog *log,
                     QObject *parent = nullptr);
    ~NetworkingDaemon() override;

    /*! How long a reply takes. */
    void setReplyDelay(DelayRange delay) { m_replyDelay = delay; }

    /*! Publishes everything; the control object last, so that whoever finds it finds the rest. */
    bool start(QString *error);

    /*!
     * Ends as a killed process does: requests stay open, state objects stay as they are. After \a backAfter
     * milliseconds it starts again; never, when that is -1. A dead daemon does not die again.
     */
    void die(int backAfter);

private:
    Q_DISABLE_COPY(NetworkingDaemon)

    bool publishInterfaces(QString *error);
    bool serveControl(QString *error);
    void onInterfaceAdded(const QString &name);
    void onInterfaceRemoved(const QString &name);
    void onInterfaceChanged(const QString &name, const ZopChangeset &changes);
    void onStatusChanged(const ZopChangeset &changes);
    void onRequest(const ZopChangeset &changes);
    void treat(const NetworkingRequest &request, const Fault &fault);
    void answerLater(const NetworkingRequest &request, int replies);
    void answer(const NetworkingRequest &request, int replies);
    void reply(const NetworkingRequest &request, const Refusal &refusal);
    void report(const QString &path, bool done, const QString &error) const;

    World *m_world;
    InterfaceControl *m_control;
    FaultPlan *m_faults;
    Pace *m_pace;
    const EventLog *m_log;
    DelayRange m_replyDelay;
    ObjectPublisher m_publisher;
    std::unique_ptr<ZopObject> m_controlObject; // none while the daemon is dead
};

} // namespace morvek

#endif
