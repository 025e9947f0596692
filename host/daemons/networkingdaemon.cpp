// SPDX-License-Identifier: Apache-2.0
#include "networkingdaemon.h"

#include "eventlog.h"
#include "faultplan.h"
#include "interfacecontrol.h"
#include "networkingrequest.h"
#include "wirenames.h"
#include "world.h"
#include "zopobject.h"

namespace morvek {

namespace {

QString pathOf(const QString &interface)
{
    return Wire::InterfacesDirectory + QLatin1Char('/') + interface;
}

} // namespace

NetworkingDaemon::NetworkingDaemon(World *world, InterfaceControl *control, FaultPlan *faults, Pace *pace,
                                   const EventLog *log, QObject *parent)
    : QObject(parent),
      m_world(world),
      m_control(control),
      m_faults(faults),
      m_pace(pace),
      m_log(log)
{
}

NetworkingDaemon::~NetworkingDaemon() = default;

bool NetworkingDaemon::start(QString *error)
{
    // A daemon that has the control object already keeps what it has published; and whoever finds the status object
    // can open the control object too. Requests are heard from the event loop only.
    if (!serveControl(error))
        return false;
    if (!publishInterfaces(error) || !m_publisher.publish(Wire::StatusObject, m_world->status(), error)) {
        m_controlObject.reset();
        return false;
    }
    connect(m_world, &World::interfaceAdded, this, &NetworkingDaemon::onInterfaceAdded);
    connect(m_world, &World::interfaceRemoved, this, &NetworkingDaemon::onInterfaceRemoved);
    connect(m_world, &World::interfaceChanged, this, &NetworkingDaemon::onInterfaceChanged);
    connect(m_world, &World::statusChanged, this, &NetworkingDaemon::onStatusChanged);
    return true;
}

void NetworkingDaemon::die(int backAfter)
{
    if (!m_controlObject)
        return;
    m_world->disconnect(this);
    m_controlObject.reset();
    m_publisher.abandon();
    m_log->happened("daemon", QStringLiteral("dead"));
    if (backAfter == -1)
        return;
    m_pace->after(backAfter, this, [this] {
        QString error;
        if (start(&error))
            m_log->happened("daemon", QStringLiteral("back"));
        else
            m_log->trouble(QStringLiteral("the daemon cannot come back: ") + error);
    });
}

bool NetworkingDaemon::publishInterfaces(QString *error)
{
    const QStringList former = ObjectPublisher::names(Wire::InterfacesDirectory);
    for (const QString &name : former) {
        if (!m_world->hasInterface(name) && !m_publisher.remove(pathOf(name), error))
            return false;
    }
    const QStringList interfaces = m_world->interfaces();
    for (const QString &name : interfaces) {
        if (!m_publisher.publish(pathOf(name), m_world->interfaceAttributes(name), error))
            return false;
    }
    return true;
}

bool NetworkingDaemon::serveControl(QString *error)
{
    auto object = std::make_unique<ZopObject>(Wire::ControlObject, ZopObject::Publish, true);
    if (!object->isValid()) {
        *error = object->errorString();
        return false;
    }
    connect(object.get(), &ZopObject::attributesChanged, this, &NetworkingDaemon::onRequest);
    m_controlObject = std::move(object);
    return true;
}

void NetworkingDaemon::onInterfaceAdded(const QString &name)
{
    QString error;
    const bool done = m_publisher.publish(pathOf(name), m_world->interfaceAttributes(name), &error);
    report(pathOf(name), done, error);
}

void NetworkingDaemon::onInterfaceRemoved(const QString &name)
{
    QString error;
    const bool done = m_publisher.remove(pathOf(name), &error);
    report(pathOf(name), done, error);
}

void NetworkingDaemon::onInterfaceChanged(const QString &name, const ZopChangeset &changes)
{
    QString error;
    const bool done = m_publisher.update(pathOf(name), changes, &error);
    report(pathOf(name), done, error);
}

void NetworkingDaemon::onStatusChanged(const ZopChangeset &changes)
{
    QString error;
    const bool done = m_publisher.update(Wire::StatusObject, changes, &error);
    report(Wire::StatusObject, done, error);
}

void NetworkingDaemon::onRequest(const ZopChangeset &changes)
{
    const NetworkingRequest request = NetworkingRequest::read(changes);
    m_log->happened("request", request.toString());
    if (const Fault *fault = m_faults->next(request.message, request.interface))
        treat(request, *fault);
    else
        answerLater(request, 1);
}

void NetworkingDaemon::treat(const NetworkingRequest &request, const Fault &fault)
{
    ZopObject *context = m_controlObject.get();
    switch (fault.kind) {
    case Fault::Refuse:
        m_pace->after(m_replyDelay, context,
                      [this, request, refusal = Refusal {fault.code, fault.text}] { reply(request, refusal); });
        break;
    case Fault::NoReply:
        m_log->happened("fault", QStringLiteral("no reply to ") + request.toString());
        if (fault.performs)
            answerLater(request, 0);
        break;
    case Fault::Late:
        m_pace->after(fault.delay, context, [this, request] { answer(request, 1); });
        break;
    case Fault::Double:
        answerLater(request, 2);
        break;
    case Fault::Die:
        // Not at once: the control object must not be destroyed inside its own signal.
        m_pace->after(0, this, [this, backAfter = fault.backAfter] { die(backAfter); });
        break;
    }
}

void NetworkingDaemon::answerLater(const NetworkingRequest &request, int replies)
{
    // The control object is the context: what a dead daemon has not answered stays unanswered.
    m_pace->after(m_replyDelay, m_controlObject.get(), [this, request, replies] { answer(request, replies); });
}

void NetworkingDaemon::answer(const NetworkingRequest &request, int replies)
{
    const Refusal refusal = request.refusal ? request.refusal : m_control->refuses(request);
    for (int i = 0; i < replies; ++i)
        reply(request, refusal);
    if (!refusal)
        m_control->perform(request);
}

void NetworkingDaemon::reply(const NetworkingRequest &request, const Refusal &refusal)
{
    ZopChangeset changes;
    changes.assignments.insert(Wire::Res, request.message);
    changes.assignments.insert(Wire::Id, request.id);
    changes.assignments.insert(Wire::Peer, request.peer);
    if (refusal) {
        changes.assignments.insert(Wire::Err, refusal.code);
        changes.assignments.insert(Wire::ErrMsg, refusal.text);
    }
    const bool sent = m_controlObject->setAttributes(changes);
    const QString outcome =
        refusal ? QStringLiteral("refused (%1): %2").arg(refusal.code).arg(refusal.text) : QStringLiteral("ok");
    m_log->happened("reply",
                    QStringLiteral("%1 id=%2 %3%4")
                        .arg(request.message, request.id.toString(), outcome,
                             sent ? QString() : QStringLiteral(" (the client is gone)")));
}

void NetworkingDaemon::report(const QString &path, bool done, const QString &error) const
{
    if (!done)
        m_log->trouble(QStringLiteral("cannot publish \"%1\": %2").arg(path, error));
}

} // namespace morvek
