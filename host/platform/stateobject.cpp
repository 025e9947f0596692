// SPDX-License-Identifier: Apache-2.0
#include "stateobject.h"

#include "hostlog.h"

#include <QtCore/QFile>

namespace morvek {

namespace {

// How much one turn of the event loop tells of one object.
constexpr int RecordsPerTurn = 256;

void apply(const ZopChangeset &changes, QMap<QString, ZopVariant> *values)
{
    for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
        values->insert(it.key(), it.value());
    for (const QString &name : changes.removals)
        values->remove(name);
}

/*! What \a reader has from here on, folded into \a state. */
void readInto(QMap<QString, ZopVariant> *state, Journal::Reader *reader)
{
    Journal::Record record;
    while (reader->next(&record))
        apply(record.changes, state);
}

} // namespace

StateObject::StateObject(const ZopPath &path, Tell tell)
    : ZopBackend(std::move(tell)),
      m_path(path),
      m_watcher(FileWatcher::instance())
{
}

StateObject::~StateObject()
{
    if (m_watching)
        m_watcher->unwatch(m_path.folder(), m_path.name(), this);
}

bool StateObject::start(QString *error)
{
    // The watch comes first: what happens after the first look is told by an event.
    m_watching = m_watcher->watch(m_path.folder(), m_path.name(), this, error);
    if (!m_watching || !m_reader.open(m_path, error))
        return false;
    m_toldFrom = m_reader.size();
    return true;
}

bool StateObject::write(const ZopChangeset &changes, QString *error)
{
    return m_writer.append(m_path, changes, error);
}

void StateObject::refresh()
{
    QString error;
    m_values.clear();
    m_toldFrom = 0;
    m_reader.close();
    m_isBehind = !m_reader.open(m_path, &error);
    if (!m_isBehind)
        readInto(&m_values, &m_reader);
}

void StateObject::entryChanged(const QByteArray &, Event event)
{
    if (event == Modified && !m_isBehind)
        drain();
    else
        follow();
}

void StateObject::folderChanged()
{
    follow();
}

/*! Tells what the file holds, and goes on to the one that has taken its place, if any. */
void StateObject::follow()
{
    while (drain()) {
        if (m_reader.isOpen() && m_reader.isCurrent())
            return;
        // Nobody writes the old file any more, but something may have come since it was drained.
        if (!drain() || !openNext())
            return;
    }
}

/*! Tells what has been appended; false when there may be more, or this object is gone. */
bool StateObject::drain()
{
    const QPointer<StateObject> guard(this);
    Journal::Record record;
    for (int told = 0; m_reader.isOpen() && m_reader.next(&record);) {
        if (record.end <= m_toldFrom)
            continue;
        apply(record.changes, &m_values);
        if (record.writer == m_writer.number())
            continue;
        tell(record.changes);
        if (!guard)
            return false;
        if (++told == RecordsPerTurn) {
            QMetaObject::invokeMethod(this, &StateObject::follow, Qt::QueuedConnection);
            return false;
        }
    }
    return true;
}

/*! Opens the file that the path names now; false when there is none, or this object is gone. */
bool StateObject::openNext()
{
    const bool wasThere = m_reader.isOpen();
    const Journal::Identity previous = m_reader.identity();
    QString error;
    if (!m_reader.open(m_path, &error)) {
        m_isBehind = Journal::exists(m_path);
        if (wasThere && !m_isBehind) {
            m_reader.close();
            tellState({});
        }
        return false;
    }
    m_isBehind = false;
    m_toldFrom = 0;

    const Journal::Identity present = m_reader.identity();
    const bool isSame = wasThere && present.incarnation == previous.incarnation;
    if (isSame && present.generation == previous.generation + 1) {
        Journal::Record known;
        m_reader.next(&known); // the state that the old file ended with
        return true;
    }
    if (isSame)
        logWarning(QStringLiteral("Updates of \"%1\" were lost: it was not read for too long")
                       .arg(QFile::decodeName(m_path.file())));
    else if (wasThere && !tellState({}))
        return false;
    QMap<QString, ZopVariant> state;
    readInto(&state, &m_reader);
    return tellState(state);
}

/*! Tells, as one update, what turns the known attributes into \a state; false when this object is gone. */
bool StateObject::tellState(const QMap<QString, ZopVariant> &state)
{
    ZopChangeset changes;
    changes.assignments = state;
    for (auto it = m_values.cbegin(); it != m_values.cend(); ++it) {
        if (!state.contains(it.key()))
            changes.removals.insert(it.key());
    }
    m_values = state;
    const QPointer<StateObject> guard(this);
    if (!changes.assignments.isEmpty() || !changes.removals.isEmpty())
        tell(changes);
    return guard;
}

} // namespace morvek
