// SPDX-License-Identifier: Apache-2.0
#include "recordedworld.h"

#include "eventlog.h"
#include "refusal.h"
#include "wirenames.h"
#include "world.h"

#include <QtCore/QThread>

namespace morvek {

namespace {

// What clients take to hear of something, generously.
constexpr int Pause = 5; // milliseconds

const QString InterfacePrefix = Wire::InterfacesDirectory + QLatin1Char('/');

/*! False when \a path is no daemon's. */
bool findService(const QString &path, Service *service)
{
    const QMap<QString, Service> statuses {{Wire::StatusObject, Service::Networking},
                                           {Wire::WifiStatusObject, Service::Wifi},
                                           {Wire::TetheringStatusObject, Service::Tethering}};
    *service = statuses.value(path, Service::Networking);
    return statuses.contains(path) || path.startsWith(InterfacePrefix);
}

ZopChangeset removalOf(const Attributes &attributes)
{
    return difference(attributes, {});
}

QVector<int> timesOf(const QVector<RecordedEvent> &events)
{
    QVector<int> times;
    for (const RecordedEvent &event : events)
        times += int(event.time);
    return times;
}

} // namespace

RecordedWorld::RecordedWorld(const Recording &recording, World *world, Pace *pace, const EventLog *log)
    : m_world(world),
      m_log(log),
      m_player(pace, [this](int number) {
          leaveTime(m_events.at(number));
          play(m_events.at(number));
          m_sinceLast.start();
      })
{
    QSet<QString> others;
    for (const RecordedEvent &event : recording.events) {
        Service service;
        if (!findService(event.object, &service)) {
            others.insert(event.object);
            continue;
        }
        m_services.insert(service);
        if (event.kind == RecordedEvent::Present)
            play(event);
        else
            m_events += event;
    }
    if (!others.isEmpty())
        m_log->trouble(QStringLiteral("not played, as they are no daemon's: %1 of the recording's objects").arg(others.size()));
    m_player.setTimes(timesOf(m_events));
}

Fault RecordedWorld::refusal()
{
    Fault fault;
    fault.word = QStringLiteral("refuse");
    fault.code = Refusal::Recording;
    fault.text = QStringLiteral("this is a recording");
    return fault;
}

/*!
 * Whoever hears of an object reads all that has come to it, and finds a new one as it has become. So nothing comes to
 * an object until what was recorded between, or its creation, has been heard of.
 */
void RecordedWorld::leaveTime(const RecordedEvent &event)
{
    const bool returns = m_burst.contains(event.object) && m_lastObject != event.object;
    const qint64 passed = m_sinceLast.isValid() ? m_sinceLast.elapsed() : Pause;
    if (passed < Pause && (returns || m_created.contains(event.object)))
        QThread::msleep(ulong(Pause - passed));
    if (passed >= Pause || returns || m_created.contains(event.object)) {
        m_burst.clear();
        m_created.clear();
    }
    m_lastObject = event.object;
    m_burst.insert(event.object);
    if (event.kind == RecordedEvent::Created)
        m_created.insert(event.object);
}

void RecordedWorld::play(const RecordedEvent &event)
{
    Service service;
    findService(event.object, &service);
    const bool isInterface = event.object.startsWith(InterfacePrefix);
    const QString interface = event.object.mid(InterfacePrefix.size());
    switch (event.kind) {
    case RecordedEvent::Present:
    case RecordedEvent::Created:
        if (isInterface)
            m_world->addInterface(interface, event.changes.assignments);
        else
            m_world->changeStatus(service, event.changes);
        break;
    case RecordedEvent::Updated:
        if (isInterface)
            m_world->changeInterface(interface, event.changes);
        else
            m_world->changeStatus(service, event.changes);
        break;
    case RecordedEvent::Gone:
        if (isInterface)
            m_world->removeInterface(interface);
        else // its daemon keeps it, without what it held
            m_world->changeStatus(service, removalOf(m_world->status(service)));
        break;
    }
}

} // namespace morvek
