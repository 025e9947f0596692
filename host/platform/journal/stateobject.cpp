// SPDX-License-Identifier: Apache-2.0
#include "stateobject.h"

#include "hostlog.h"
#include "zopwire.h"

#include <QtCore/QFile>

#include <cerrno>
#include <utility>

namespace morvek {

namespace {

// How much one turn of the event loop tells of one object, and reads for it.
constexpr int RecordsPerTurn = 256;
constexpr qint64 WorkPerTurn = 2 * 1024 * 1024;

} // namespace

StateObject::StateObject(const ZopPath &path, Tell tell, Heard heard)
    : ZopBackend(std::move(tell)),
      m_path(path),
      m_watcher(FileWatcher::instance()),
      m_heard(std::move(heard))
{
}

StateObject::~StateObject()
{
    unwatch();
}

bool StateObject::start(QString *error)
{
    // The watch comes first: what happens after the first look is told by an event.
    m_isAwake = isHeard();
    if ((m_isAwake && !watch(error)) || !m_reader.open(m_path, error))
        return false;
    if (!m_isAwake)
        m_reader.unlock();
    m_toldFrom = m_reader.openedSize();
    return true;
}

bool StateObject::watch(QString *error)
{
    m_isWatching = m_isWatching || m_watcher->watch(m_path.folder(), m_path.name(), this, error);
    return m_isWatching;
}

void StateObject::unwatch()
{
    if (std::exchange(m_isWatching, false))
        m_watcher->unwatch(m_path.folder(), m_path.name(), this);
}

/*! Until the file can be watched it is read from time to time. */
void StateObject::tryToWatch()
{
    QString error;
    if (!watch(&error))
        m_watcher->retryLater(this);
}

/*! Who begins to listen hears of what comes from now on. */
void StateObject::wakeUp()
{
    if (m_isAwake)
        return;
    tryToWatch();
    follow();
    m_reader.lock();
    m_isAwake = true;
    followLater(); // the file may have been replaced before it was locked
}

void StateObject::fallAsleep()
{
    unwatch();
    m_isAwake = false;
    m_reader.unlock();
}

/*! While it sleeps, it reads what has come when somebody asks. */
void StateObject::catchUp()
{
    if (!m_isAwake)
        follow();
}

Journal::Writer *StateObject::writer()
{
    if (!m_writer)
        m_writer = std::make_unique<Journal::Writer>();
    return m_writer.get();
}

bool StateObject::write(const ZopChangeset &changes, QString *error)
{
    if (!writer()->append(m_path, changes, error))
        return false;
    if (m_writer->hasReplaced())
        catchUp(); // before there is a generation more
    return true;
}

bool StateObject::check(QString *error)
{
    if (m_check.isUnchanged(m_path))
        return true;
    catchUp();
    if (writer()->hasLost(m_path)) {
        *error = Journal::cutOff(m_path);
        return false;
    }
    const ObjectCheck::Result result = m_check.judge(m_path, m_writer->number(), error);
    m_writer->expect(m_check.incarnation());
    // Somebody may have read more of it before it was cut: then the next file makes all agree.
    if (result == ObjectCheck::Torn)
        m_writer->renew(m_path, error);
    return result != ObjectCheck::Unsound;
}

void StateObject::refresh()
{
    const bool wasThere = m_reader.isOpen();
    const quint64 incarnation = m_reader.identity().incarnation;
    if (!(wasThere && m_reader.isCurrent()) && !open(&m_reader) && !m_isBehind)
        m_reader.close();
    m_toldFrom = 0;
    m_isInStep = false;
    m_folding = NotFolding;
    const bool isSame = m_reader.isOpen() && m_reader.identity().incarnation == incarnation;
    if (wasThere && !isSame && !tellState({}))
        return;
    m_values.clear();
    if (m_reader.isOpen()) {
        m_reader.rewind();
        Journal::Record record;
        while (m_reader.next(&record))
            apply(record.changes, &m_values);
    }
}

void StateObject::entryChanged(const QByteArray &, Event event)
{
    if (!isHeard())
        fallAsleep(); // listeners may go without a word
    else if (event == Modified && !m_isBehind)
        drain();
    else
        follow();
}

void StateObject::folderChanged()
{
    if (!isHeard()) {
        fallAsleep();
        return;
    }
    tryToWatch();
    follow();
}

/*! Tells what the file holds, and goes on to the one that has taken its place, if any. */
void StateObject::follow()
{
    m_isInStep = false;
    while (drain()) {
        if (m_folding == NotFolding && m_reader.isOpen() && m_reader.isCurrent())
            return;
        // Nobody writes the old file any more, but something may have come since it was drained.
        if (!drain() || !openNext())
            return;
    }
}

/*! Goes on from the event loop: this turn has told enough, or a slot may run an event loop of its own. */
void StateObject::followLater()
{
    if (std::exchange(m_followsLater, true))
        return;
    const auto goOn = [this] {
        m_followsLater = false;
        m_watcher->beginTurn();
        if (m_watcher->isHolding()) {
            m_watcher->retryLater(this);
            return;
        }
        const QPointer<StateObject> guard(this);
        if (std::exchange(m_renewsFirst, false))
            m_watcher->renewExchanged();
        if (guard)
            follow();
    };
    QMetaObject::invokeMethod(this, goOn, Qt::QueuedConnection);
}

/*! Whether as much has been told and read in this turn of the event loop as others can wait for. */
bool StateObject::hasHadItsTurn()
{
    if (std::exchange(m_turn, m_watcher->turn()) != m_watcher->turn()) {
        m_toldInTurn = 0;
        m_workInTurn = 0;
    }
    return m_isAwake && (m_toldInTurn == RecordsPerTurn || m_workInTurn > WorkPerTurn);
}

/*!
 * Tells of objects that have come before what has been read was written. There can be none when each event so far was
 * that of one update: the creations that came before the update came before its event, too.
 */
void StateObject::tellAppearances()
{
    m_hasLooked = true;
    const QPointer<StateObject> guard(this);
    const bool isBeingWritten = m_reader.isBeingWritten(); // then its event may come later
    const bool isQuiet = m_watcher->tellAppearances();
    if (guard)
        m_isInStep = isQuiet && !isBeingWritten;
}

/*! Tells what has been appended; false when there may be more, or this object is gone. */
bool StateObject::drain()
{
    if (m_folding == WhatIsGone)
        return true; // which was told as it came
    if (m_folding == WhatIsThere) {
        if (!fold())
            return false;
        const QMap<QString, ZopVariant> state = std::exchange(m_folded, {});
        return m_reader.isEmptied() || tellState(state); // else the file that has taken its place tells the state
    }
    const QPointer<StateObject> guard(this);
    int steps = 0;
    Journal::Record record;
    while (guard && m_reader.isOpen()) {
        if (hasHadItsTurn() || (m_isAwake && m_watcher->isHolding())) {
            followLater();
            return false;
        }
        // What was read at once after the event is the update that the event is of, unless that was a write that
        // failed.
        const bool isExpected = m_isInStep && steps == 1 && !m_watcher->hasAppearances();
        if (m_isAwake && m_reader.hasRead() && !m_hasLooked && !isExpected) {
            tellAppearances();
            continue;
        }
        const qint64 work = m_reader.work();
        const bool isThere = m_reader.nextOfRead(&record);
        const bool goesOn = isThere || m_reader.readOn();
        m_workInTurn += m_reader.work() - work;
        if (!goesOn)
            return true;
        ++steps;
        m_hasLooked = m_hasLooked && isThere;
        if (!isThere || record.end <= m_toldFrom)
            continue;
        apply(record.changes, &m_values);
        const bool isOwn = m_writer && record.writer == m_writer->number();
        if (!m_isAwake || isOwn || record.isEmptyState())
            continue;
        if (++m_toldInTurn == RecordsPerTurn || m_reader.hasMore())
            followLater();
        tell(record.changes);
    }
    return guard;
}

void StateObject::startFolding(Folding folding)
{
    m_folding = folding;
    m_folded = folding == WhatIsGone ? m_values : QMap<QString, ZopVariant>();
    m_reader.rewind();
}

/*! Goes on; false when there may be more. */
bool StateObject::fold()
{
    const qint64 begun = m_reader.work();
    Journal::Record record;
    for (;;) {
        if (m_reader.nextOfRead(&record)) {
            apply(record.changes, &m_folded);
        } else if (!m_reader.readOn()) {
            m_folding = NotFolding;
            return true;
        } else if (m_isAwake && m_reader.work() - begun > WorkPerTurn) {
            followLater();
            return false;
        }
    }
}

/*! Lets \a reader read what the path names now. When it cannot, but there is something, this object is behind. */
bool StateObject::open(Journal::Reader *reader)
{
    QString error;
    const bool isOpen = reader->open(m_path, &error);
    const bool isMalformed = !isOpen && errno == EBADMSG; // which an event ends
    m_isBehind = !isOpen && !Journal::isGone(m_path);
    if (m_isBehind && !isMalformed && m_isAwake)
        m_watcher->retryLater(this);
    if (isOpen && !m_isAwake)
        reader->unlock();
    return isOpen;
}

/*! Goes on to the file that the path names now; false when there is none, or this object is gone. */
bool StateObject::openNext()
{
    Journal::Reader next; // takes its lock before the old one's is let go
    const bool isThere = open(&next);
    if (m_isBehind)
        return false;

    const bool wasThere = m_reader.isOpen();
    const Journal::Identity previous = m_reader.identity();
    const Journal::Identity present = next.identity();
    const bool isSame = wasThere && isThere && present.incarnation == previous.incarnation;
    if (wasThere && !isSame) {
        // Whoever has not read the values when it opened the object knows only some of those that are gone; and whoever
        // has, more than what is left of a spoilt file.
        if (m_folding == NotFolding)
            startFolding(WhatIsGone);
        if (!fold())
            return false;
        m_values = std::exchange(m_folded, {});
    }
    m_reader = std::move(next);
    m_toldFrom = 0;
    if (!isSame) { // The first record of a new object is told like those that follow it.
        if ((wasThere && !tellState({})) || !isThere)
            return false;
        m_renewsFirst = m_isAwake && m_watcher->hasExchanged();
        if (m_renewsFirst) // What it speaks of may be in folders whose events have not been handled yet.
            followLater();
        return !m_renewsFirst;
    }

    if (present.generation == previous.generation + 1) {
        Journal::Record known;
        m_reader.next(&known); // the state that the old file ended with
        return true;
    }
    if (m_isAwake)
        logError(QStringLiteral("Updates of \"%1\" were lost: it was not read for too long, or was damaged")
                     .arg(QFile::decodeName(m_path.file())));
    startFolding(WhatIsThere);
    return true;
}

/*! Tells, as one update, what turns the known attributes into \a state; false when this object is gone. */
bool StateObject::tellState(const QMap<QString, ZopVariant> &state)
{
    ZopChangeset changes;
    for (auto it = state.cbegin(); it != state.cend(); ++it) {
        if (m_values.value(it.key()) != *it) // an old event must not be taken for a new one
            changes.assignments.insert(it.key(), *it);
    }
    for (auto it = m_values.cbegin(); it != m_values.cend(); ++it) {
        if (!state.contains(it.key()))
            changes.removals.insert(it.key());
    }
    m_values = state;
    const QPointer<StateObject> guard(this);
    if (m_isAwake && !(changes.assignments.isEmpty() && changes.removals.isEmpty()))
        tell(changes);
    return guard;
}

} // namespace morvek
