// SPDX-License-Identifier: Apache-2.0
#include "recordedworld.h"

#include "eventlog.h"
#include "refusal.h"
#include "wirenames.h"
#include "world.h"

namespace morvek {

namespace {

// What clients take to hear of something, generously.
constexpr qint64 Pause = 20; // milliseconds

const QString InterfacePrefix = Wire::InterfacesDirectory + QLatin1Char('/');

/*! False when \a path is no daemon's. */
bool findService(const QString &path, Service *service)
{
    const QMap<QString, Service> statuses {{Wire::StatusObject, Service::Networking},
                                           {Wire::WifiStatusObject, Service::Wifi},
                                           {Wire::TetheringStatusObject, Service::Tethering}};
    *service = statuses.value(path, Service::Networking);
    const bool isInterface =
        path.startsWith(InterfacePrefix) && path.indexOf(QLatin1Char('/'), InterfacePrefix.size()) == -1;
    return statuses.contains(path) || (isInterface && path != InterfacePrefix);
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
          m_last = m_events.at(number);
          play(m_last);
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
        m_log->trouble(
            QStringLiteral("not played, as they are no daemon's: %1 of the recording's objects").arg(others.size()));
    m_player.setTimes(timesOf(m_events));
    m_player.setPause([this](int number) { return pauseBefore(m_events.at(number)); });
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
 * However fast time passes: whoever hears of an object reads all that has come to it, hears of a new one at once, and
 * finds it as it has become. So clients have time between two events, unless both are one object's and came together.
 */
int RecordedWorld::pauseBefore(const RecordedEvent &event) const
{
    if (!m_sinceLast.isValid())
        return 0;
    const bool isNext =
        event.object == m_last.object && event.kind == RecordedEvent::Updated && m_last.kind == RecordedEvent::Updated;
    return int(qMax<qint64>(0, (isNext ? qMin(Pause, event.time - m_last.time) : Pause) - m_sinceLast.elapsed()));
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
