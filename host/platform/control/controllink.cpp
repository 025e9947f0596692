// SPDX-License-Identifier: Apache-2.0
#include "controllink.h"

#include "hostlog.h"
#include "zoppath.h"
#include "zopwire.h"

#include <QtCore/QFile>
#include <QtCore/QPointer>
#include <QtCore/QtEndian>

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

namespace morvek {

namespace {

using Length = quint32;
constexpr int LengthSize = sizeof(Length);

// What is done for one connection before others get their turn.
constexpr int FramesOfTurn = 32;
constexpr int BytesOfTurn = 64 * 1024;

} // namespace

ControlLink::ControlLink(FileDescriptor socket, const ZopPath &path, QObject *parent)
    : QObject(parent),
      m_file(path.file()),
      m_socket(std::move(socket)),
      m_readable(m_socket.get(), QSocketNotifier::Read)
{
    fcntl(m_socket.get(), F_SETFL, fcntl(m_socket.get(), F_GETFL) | O_NONBLOCK);
    connect(&m_readable, &QSocketNotifier::activated, this, &ControlLink::read);
}

ZopChangeset ControlLink::refusal(const ZopVariant &message, const ZopVariant &id, const QString &reason)
{
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("res"), message);
    changes.assignments.insert(QStringLiteral("id"), id);
    changes.assignments.insert(QStringLiteral("err"), ZopVariant(-1));
    changes.assignments.insert(QStringLiteral("errmsg"), ZopVariant(reason));
    return changes;
}

bool ControlLink::send(const ZopChangeset &changes)
{
    const QByteArray frame = encodeChangeset(changes);
    if (!isOpen() || frame.size() > LargestUpdate || isFull())
        return false;
    const Length length = qToBigEndian(Length(frame.size()));
    m_outgoing.append(reinterpret_cast<const char *>(&length), LengthSize);
    m_outgoing.append(frame.constData(), frame.size());
    const bool isTaken = flush();
    if (held() > Share)
        emit grown();
    return isTaken && isOpen();
}

bool ControlLink::isFull() const
{
    return m_outgoing.size() > LargestUpdate;
}

bool ControlLink::isAlive() const
{
    pollfd state = {m_socket.get(), POLLOUT, 0};
    return isOpen() && poll(&state, 1, 0) >= 0 && !(state.revents & (POLLHUP | POLLERR));
}

void ControlLink::drop(const QString &reason)
{
    if (!isOpen())
        return;
    if (!reason.isEmpty())
        logError(QStringLiteral("Closed a connection of \"%1\", %2").arg(QFile::decodeName(m_file), reason));
    m_readable.setEnabled(false);
    m_writable.reset();
    m_socket.reset();
    m_incoming.clear(); // what a dropped one has sent is not believed
    m_outgoing.clear();
    emit closed();
}

/*!
 * Reads some of what has come, unless what came before still waits to be heard. A slot may delete this, or run an event
 * loop of its own, which hears the rest.
 */
void ControlLink::read()
{
    if (m_awaitsTurn) {
        m_readable.setEnabled(false);
        return;
    }
    const ssize_t size = m_incoming.receive(m_socket.get(), BytesOfTurn);
    if (size == 0 || (size == -1 && errno != EAGAIN && errno != EINTR))
        drop();
    else if (held() > Share)
        emit grown();
    if (m_isHeardAtOnce)
        takeTurn();
    else
        hearOn();
}

/*! Sees to it that what comes is heard, whoever runs the event loop next. */
void ControlLink::hearOn()
{
    if (!isOpen() || !isFrameWhole())
        m_readable.setEnabled(isOpen());
    else if (!std::exchange(m_awaitsTurn, true))
        QMetaObject::invokeMethod(this, &ControlLink::takeAwaitedTurn, Qt::QueuedConnection);
}

void ControlLink::takeAwaitedTurn()
{
    m_awaitsTurn = false;
    takeTurn();
}

void ControlLink::takeTurn()
{
    const QPointer<ControlLink> guard(this);
    for (int frames = 0; guard && frames < FramesOfTurn; ++frames) {
        ZopChangeset changes;
        const bool isTaken = takeFrame(&changes);
        hearOn();
        if (!isTaken)
            return;
        emit received(changes);
    }
}

/*! Of the first frame, its length included; as long as that is not known, of the length alone. */
qint64 ControlLink::frameSize() const
{
    const bool isKnown = m_incoming.size() >= LengthSize;
    return LengthSize + qint64(isKnown ? qFromBigEndian<Length>(m_incoming.data()) : 0);
}

bool ControlLink::isFrameWhole() const
{
    const qint64 size = frameSize();
    return size > LengthSize + LargestUpdate || (m_incoming.size() >= LengthSize && m_incoming.size() >= size);
}

/*! Takes the first frame, if it is whole; a malformed one ends the connection. */
bool ControlLink::takeFrame(ZopChangeset *changes)
{
    if (!isOpen() || !isFrameWhole())
        return false;
    const qint64 size = frameSize();
    const bool isSound =
        size <= m_incoming.size() && decodeChangeset(m_incoming.data() + LengthSize, int(size) - LengthSize, changes);
    if (isSound)
        m_incoming.pass(int(size));
    else
        drop(QStringLiteral("which carried malformed content"));
    return isSound;
}

/*! Writes what can be written; false when the other side takes nothing any more. */
bool ControlLink::flush()
{
    while (m_outgoing.size() > 0 && m_outgoing.transmit(m_socket.get()) > 0) { }
    // The end of a broken connection is found behind what it has sent.
    const bool isBroken = m_outgoing.size() > 0 && errno != EAGAIN && errno != EINTR;
    if (isBroken)
        m_outgoing.clear();
    awaitRoom();
    return !isBroken;
}

/*! Sees to it that what is left is written when the other side takes it. */
void ControlLink::awaitRoom()
{
    if (m_outgoing.size() > 0 && !m_writable) {
        m_writable = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Write);
        connect(m_writable.get(), &QSocketNotifier::activated, this, &ControlLink::flush);
    } else if (m_writable) {
        m_writable->setEnabled(m_outgoing.size() > 0);
    }
}

} // namespace morvek
