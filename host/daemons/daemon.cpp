// SPDX-License-Identifier: Apache-2.0
#include "daemon.h"

#include "eventlog.h"
#include "faultplan.h"
#include "requestbook.h"
#include "wirenames.h"
#include "world.h"
#include "zopobject.h"

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

// Of the machine's time: what hinders a daemon has nothing to do with the world.
constexpr std::chrono::milliseconds RetryPause {200};
constexpr std::chrono::milliseconds LongestPause {10000};

} // namespace

Daemon::Daemon(const QString &name, const QString &controlPath, Order order, const DaemonTools &tools, QObject *parent)
    : QObject(parent),
      m_name(name),
      m_controlPath(controlPath),
      m_order(order),
      m_tools(tools),
      m_publisher(
          [log = tools.log](const QString &path, const QString &text) {
              log->trouble(QStringLiteral("\"%1\": %2").arg(path, text));
          },
          tools.mayPublish)
{
    m_publishAgain.setInterval(RetryPause);
    connect(&m_publishAgain, &QTimer::timeout, this, &Daemon::publishAgain);
}

Daemon::~Daemon() = default;

bool Daemon::start(QString *error)
{
    // A daemon that has the control object already keeps what it has published. Requests are heard from the event loop
    // only.
    const bool started = m_order == ControlFirst ? serveControl(error) && publish(error)
                                                 : expectUnserved(error) && publish(error) && serveControl(error);
    if (started)
        follow();
    else
        letGo();
    return started;
}

void Daemon::die(int backAfter)
{
    if (!m_controlObject)
        return;
    letGo();
    m_tools.log->happened("daemon", m_name + QStringLiteral(" dead"));
    ++m_death;
    if (backAfter != -1)
        m_tools.pace->after(backAfter, this, [this, death = m_death] { comeBack(death, RetryPause); });
}

void Daemon::comeBack()
{
    comeBack(++m_death, RetryPause);
}

void Daemon::look()
{
    if (!m_controlObject)
        return;
    // In the order in which clients expect them.
    if (m_order == ControlFirst)
        lookAtControl();
    const QStringList mended = m_publisher.check([this](const QString &path, const QString &text) {
        m_tools.log->trouble(QStringLiteral("\"%1\" is published anew: %2").arg(path, text));
    });
    for (const QString &path : mended)
        onLatePublication(path);
    if (m_publisher.isWaiting() && !m_publishAgain.isActive())
        m_publishAgain.start();
    if (m_order == ControlLast)
        lookAtControl();
}

void Daemon::lookAtControl()
{
    const ZopObject::NoWaiting noWaiting;
    const bool isServed = m_controlObject->check();
    if (!std::exchange(m_hasLostControl, !isServed) && !isServed)
        m_tools.log->trouble(
            QStringLiteral("cannot serve \"%1\": %2").arg(m_controlPath, m_controlObject->errorString()));
}

/*! Tries to start; \a pause is how long it waits before it tries again. */
void Daemon::comeBack(int death, std::chrono::milliseconds pause)
{
    if (death != m_death || !isDead())
        return;
    QString error;
    if (start(&error)) {
        m_tools.log->happened("daemon", m_name + QStringLiteral(" back"));
        return;
    }
    if (pause == RetryPause)
        m_tools.log->trouble(QStringLiteral("the %1 daemon cannot come back: %2").arg(m_name, error));
    // Ever longer ones: each attempt shows the control object for a moment, and tells what can be published.
    QTimer::singleShot(pause, this, [this, death, pause] { comeBack(death, std::min(2 * pause, LongestPause)); });
}

void Daemon::letGo()
{
    m_tools.world->disconnect(this);
    m_publishAgain.stop();
    m_controlObject.reset();
    m_publisher.abandon();
}

bool Daemon::expectUnserved(QString *error) const
{
    const bool served = ZopObject(m_controlPath, ZopObject::Subscribe, false).isValid();
    if (served)
        *error = QStringLiteral("another daemon serves \"%1\"").arg(m_controlPath);
    return !served;
}

bool Daemon::serveControl(QString *error)
{
    auto object = std::make_unique<ZopObject>(m_controlPath, ZopObject::Publish, true);
    if (!object->isValid()) {
        *error = object->errorString();
        return false;
    }
    connect(object.get(), &ZopObject::attributesChanged, this, &Daemon::onRequest);
    m_controlObject = std::move(object);
    return true;
}

void Daemon::onRequest(const ZopChangeset &changes)
{
    Task task = read(changes);
    m_tools.log->happened("request", task.text);
    if (m_tools.requests)
        task.request.number =
            m_tools.requests->add({0, 0, m_name, task.request.message, task.interface, task.ssid, task.text, {}});
    if (const Fault *fault = m_tools.faults->next(task.request.message, task.interface, task.ssid))
        treat(task, *fault);
    else
        answerLater(task, 1);
}

void Daemon::treat(const Task &task, const Fault &fault)
{
    ZopObject *context = m_controlObject.get();
    switch (fault.kind) {
    case Fault::Refuse:
        m_tools.pace->after(m_replyDelay, context,
                            [this, request = task.request, refusal = Refusal {fault.code, fault.text}] {
                                reply(request, {refusal, {}});
                            });
        break;
    case Fault::NoReply:
        m_tools.log->happened("fault", QStringLiteral("no reply to ") + task.text);
        if (fault.performs)
            answerLater(task, 0);
        break;
    case Fault::Late:
        m_tools.pace->after(fault.delay, context, [this, task] { answer(task, 1); });
        break;
    case Fault::Double:
        answerLater(task, 2);
        break;
    case Fault::Answer:
        m_tools.pace->after(m_replyDelay, context, [this, request = task.request, content = fault.reply] {
            send(request, content, QStringLiteral("as the fault says"));
        });
        break;
    case Fault::Die:
        // Not at once: the control object must not be destroyed inside its own signal.
        m_tools.pace->after(0, this, [this, backAfter = fault.backAfter] { die(backAfter); });
        break;
    }
}

void Daemon::answerLater(const Task &task, int replies)
{
    // The control object is the context: what a dead daemon has not answered stays unanswered.
    m_tools.pace->after(m_replyDelay, m_controlObject.get(), [this, task, replies] { answer(task, replies); });
}

void Daemon::answer(const Task &task, int replies)
{
    const QPointer<ZopObject> asked = m_controlObject.get();
    const AnswerCall answer = [=, request = task.request](const Answer &content) {
        for (int i = 0; asked && i < replies; ++i)
            reply(request, content);
    };
    if (task.request.refusal)
        answer({task.request.refusal, {}});
    else
        task.carryOut(answer);
}

void Daemon::reply(const ControlRequest &request, const Answer &answer)
{
    const Refusal &refusal = answer.refusal;
    Attributes content;
    content.insert(Wire::Err, refusal ? ZopVariant(refusal.code) : ZopVariant(Wire::NoError));
    if (refusal)
        content.insert(Wire::ErrMsg, refusal.text);
    if (answer.dat.isValid())
        content.insert(Wire::Dat, answer.dat);
    send(request, content,
         refusal ? QStringLiteral("refused (%1): %2").arg(refusal.code).arg(refusal.text) : QStringLiteral("ok"));
}

void Daemon::send(const ControlRequest &request, const Attributes &content, const QString &outcome)
{
    ZopChangeset changes;
    changes.assignments = content;
    if (!content.contains(Wire::Res))
        changes.assignments.insert(Wire::Res, request.message);
    changes.assignments.insert(Wire::Id, request.id);
    changes.assignments.insert(Wire::Peer, request.peer);
    const bool sent = m_controlObject->setAttributes(changes);
    if (m_tools.requests)
        m_tools.requests->addAnswer(request.number, outcome);
    m_tools.log->happened("reply",
                          QStringLiteral("%1 id=%2 %3%4")
                              .arg(request.message, request.id.toString(), outcome,
                                   sent ? QString() : QStringLiteral(" (%1)").arg(m_controlObject->errorString())));
}

bool Daemon::publishStatus(Service service, const QString &path, ObjectPublisher::Takeover takeover, QString *error)
{
    return m_publisher.publish(path, world()->status(service), takeover, error);
}

void Daemon::followStatus(Service service, const QString &path)
{
    connect(world(), &World::statusChanged, this, [=](Service changed, const ZopChangeset &changes) {
        if (changed == service)
            update(path, changes);
    });
}

void Daemon::update(const QString &path, const ZopChangeset &changes)
{
    QString error;
    const bool done = m_publisher.update(path, changes, &error);
    report(path, done, error);
}

void Daemon::report(const QString &path, bool done, const QString &error)
{
    if (done || m_publishAgain.isActive())
        return;
    QString reason = error;
    if (m_tools.mayPublish && !m_tools.mayPublish(&reason) && reason.isEmpty())
        return;
    m_tools.log->trouble(QStringLiteral("cannot publish \"%1\": %2").arg(path, reason));
    m_publishAgain.start();
}

void Daemon::publishAgain()
{
    const QStringList late = m_publisher.retry();
    for (const QString &path : late)
        onLatePublication(path);
    if (m_publisher.isWaiting())
        return;
    m_publishAgain.stop();
    m_tools.log->happened("daemon", m_name + QStringLiteral(" has published everything again"));
}

} // namespace morvek
