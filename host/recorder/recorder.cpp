// SPDX-License-Identifier: Apache-2.0
#include "recorder.h"

#include "zopdirwatcher.h"
#include "zopobject.h"

#include <QtCore/QScopedValueRollback>

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

const ZopObject::PublicationMode ReadOnly = ZopObject::PublicationMode(1);

const QString ControlName = QStringLiteral("/control");

} // namespace

QStringList Recorder::ownDirectories()
{
    // The interfaces before the object that ranks them, as their daemon publishes them.
    return {QStringLiteral("/zop/services/networking/all/interfaces"), QStringLiteral("/zop/services/networking/all"),
            QStringLiteral("/zop/services/wifi"), QStringLiteral("/zop/services/tethering")};
}

Recorder::Recorder(const QStringList &directories, QObject *parent)
    : QObject(parent),
      m_directories(directories)
{
    m_directories.removeDuplicates();
}

Recorder::~Recorder() = default;

bool Recorder::start(QString *error)
{
    m_since.start();
    m_isStarting = true;
    for (const QString &directory : qAsConst(m_directories)) {
        const QString prefix = directory + QLatin1Char('/');
        auto watcher = std::make_unique<ZopDirWatcher>(directory, nullptr);
        if (!watcher->isValid()) {
            *error = directory + QLatin1String(": ") + watcher->errorString();
            return false;
        }
        connect(watcher.get(), &ZopDirWatcher::objectAdded, this,
                [this, prefix](const QString &name) { onAdded(prefix + name); });
        connect(watcher.get(), &ZopDirWatcher::objectRemoved, this,
                [this, prefix](const QString &name) { onRemoved(prefix + name); });
        watcher->setNameCacheEnabled(true);
        m_watchers.push_back(std::move(watcher));
    }
    m_isStarting = false;
    return true;
}

void Recorder::onAdded(const QString &path)
{
    if (path.endsWith(ControlName) || (m_isControl && m_isControl(path)))
        return;
    Recorded recorded {std::make_unique<ZopObject>(path, ReadOnly, false, nullptr), {}};
    if (!recorded.object->isValid()) {
        Q_EMIT missed(path, recorded.object->errorString());
        return;
    }
    RecordedEvent event;
    event.kind = m_isStarting ? RecordedEvent::Present : RecordedEvent::Created;
    event.object = path;
    ZopObject *object = recorded.object.get();
    connect(object, &ZopObject::attributesChanged, this,
            [this, path](const ZopChangeset &changes) { onChanged(path, changes); });
    m_objects[path] = std::move(recorded);
    {
        const QScopedValueRollback<RecordedEvent *> opening(m_opening, &event); // others may be announced meanwhile
        object->setAttributeCacheEnabled(true);
    }
    tell(std::move(event));
}

void Recorder::onChanged(const QString &path, const ZopChangeset &changes)
{
    QSet<QString> &attributes = m_objects[path].attributes;
    const bool mayBeTheEnd =
        changes.assignments.isEmpty() && !changes.removals.isEmpty() && changes.removals.contains(attributes);
    attributes.subtract(changes.removals);
    for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
        attributes.insert(it.key());
    if (m_opening && m_opening->object == path) {
        m_opening->changes = changes;
        return;
    }
    RecordedEvent event;
    event.kind = RecordedEvent::Updated;
    event.object = path;
    event.changes = changes;
    tell(std::move(event), mayBeTheEnd);
}

void Recorder::onRemoved(const QString &path)
{
    if (m_objects.erase(path) == 0)
        return;
    RecordedEvent event;
    event.kind = RecordedEvent::Gone;
    event.object = path;
    const auto isOfObject = [&path](const Held &held) { return held.event.object == path; };
    const auto end = std::find_if(m_held.begin(), m_held.end(),
                                  [&](const Held &held) { return held.mayBeTheEnd && isOfObject(held); });
    if (end == m_held.end()) {
        tell(std::move(event));
        return;
    }
    // The object has told its removal itself, and perhaps what has come in its place, which is opened anew.
    event.time = end->event.time;
    *end = {std::move(event), false};
    m_held.erase(std::remove_if(end + 1, m_held.end(), isOfObject), m_held.end());
}

/*! An update that may be part of its object's removal waits until that is known, and so does what comes after it. */
void Recorder::tell(RecordedEvent event, bool mayBeTheEnd)
{
    event.time = m_since.elapsed();
    if (m_held.empty() && !mayBeTheEnd) {
        Q_EMIT happened(event);
        return;
    }
    if (m_held.empty())
        QMetaObject::invokeMethod(this, &Recorder::finish, Qt::QueuedConnection);
    m_held.push_back({std::move(event), mayBeTheEnd});
}

void Recorder::finish()
{
    const std::deque<Held> held = std::exchange(m_held, {});
    for (const Held &one : held)
        Q_EMIT happened(one.event);
}

} // namespace morvek
