// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_DAEMON_H
#define MORVEK_HOSTD_DAEMON_H

#include "answer.h"
#include "controlrequest.h"
#include "objectpublisher.h"
#include "pace.h"
#include "service.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <chrono>
#include <functional>

namespace morvek {

class EventLog;
class FaultPlan;
class RequestBook;
class World;
class ZopObject;
struct Fault;

/*! What all daemons work with. It must outlive them. */
struct DaemonTools
{
    World *world;
    FaultPlan *faults;
    Pace *pace;
    const EventLog *log;
    /*! Whether the root is this program's; if not, with the reason, or without one when the program is about to end. */
    ObjectPublisher::Permission mayPublish = nullptr;
    RequestBook *requests = nullptr;
};

/*! Serves a control object: reads requests, lets faults happen to them, replies in time, dies and comes back. */
class Daemon : public QObject
{
    Q_OBJECT

public:
    ~Daemon() override;

    /*! How long a reply takes. */
    void setReplyDelay(DelayRange delay) { m_replyDelay = delay; }

    /*! Serves the control object and publishes everything; nothing of that while another daemon serves it. */
    bool start(QString *error);

    /*!
     * Ends as a killed process does: requests stay open, state objects stay as they are. After \a backAfter
     * milliseconds it starts again; never, when that is -1. A dead daemon does not die again.
     */
    void die(int backAfter);
    bool isDead() const { return m_controlObject == nullptr; }
    /*! Has a dead daemon start again now, whatever was said when it died. */
    void comeBack();

    /*! Looks whether everything is still there, and mends what is not. A dead daemon does nothing. */
    void look();

protected:
    /*! A request, and what it comes to. */
    struct Task
    {
        ControlRequest request;
        QString text;                                           //!< one line that describes it, for the log
        QString interface;                                      //!< that it names, if any
        QString ssid;                                           //!< that it names, if any
        std::function<void(const AnswerCall &answer)> carryOut; //!< called when it is well-formed
    };

    /*! Which comes first, the control object or what is published: clients wait for the one and take the other. */
    enum Order { ControlFirst, ControlLast };

    /*! \a name is for the log. */
    Daemon(const QString &name, const QString &controlPath, Order order, const DaemonTools &tools, QObject *parent);

    virtual Task read(const ZopChangeset &changes) = 0;
    /*! Publishes the world as it is, over whatever is there. */
    virtual bool publish(QString *error) = 0;
    /*! Follows the world from now on. */
    virtual void follow() = 0;
    /*! The object at \a path was published, or made anew, later than it was meant to be. */
    virtual void onLatePublication(const QString &path) { Q_UNUSED(path) }

    World *world() const { return m_tools.world; }
    /*! Publishes the status of \a service in the object at \a path. */
    bool publishStatus(Service service, const QString &path, ObjectPublisher::Takeover takeover, QString *error);
    void followStatus(Service service, const QString &path);
    ObjectPublisher &publisher() { return m_publisher; }
    void update(const QString &path, const ZopChangeset &changes);
    /*! What could not be published is told once, and tried again until it can be. */
    void report(const QString &path, bool done, const QString &error);

private:
    Q_DISABLE_COPY(Daemon)

    bool expectUnserved(QString *error) const;
    bool serveControl(QString *error);
    void lookAtControl();
    void comeBack(int death, std::chrono::milliseconds pause);
    void letGo();
    void publishAgain();
    void onRequest(const ZopChangeset &changes);
    void treat(const Task &task, const Fault &fault);
    void answerLater(const Task &task, int replies);
    void answer(const Task &task, int replies);
    void reply(const ControlRequest &request, const Answer &answer);
    void send(const ControlRequest &request, const Attributes &content, const QString &outcome);

    QString m_name;
    QString m_controlPath;
    Order m_order;
    DaemonTools m_tools;
    DelayRange m_replyDelay;
    ObjectPublisher m_publisher;
    QTimer m_publishAgain;                      // runs while something waits to be published
    std::unique_ptr<ZopObject> m_controlObject; // none while the daemon is dead
    int m_death = 0;                            // counts them, so that nothing comes back from an earlier one
    bool m_hasLostControl = false;              // and has said so
};

} // namespace morvek

#endif
