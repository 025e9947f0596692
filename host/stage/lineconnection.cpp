// SPDX-License-Identifier: Apache-2.0
#include "lineconnection.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace morvek {

namespace {

constexpr int BytesOfTurn = 64 * 1024;

} // namespace

LineConnection::LineConnection(FileDescriptor socket, Answer answer, Refuse refuse, QObject *parent)
    : QObject(parent),
      m_socket(std::move(socket)),
      m_readable(m_socket.get(), QSocketNotifier::Read),
      m_writable(m_socket.get(), QSocketNotifier::Write),
      m_answer(std::move(answer)),
      m_refuse(std::move(refuse))
{
    m_writable.setEnabled(false);
    connect(&m_readable, &QSocketNotifier::activated, this, &LineConnection::read);
    connect(&m_writable, &QSocketNotifier::activated, this, &LineConnection::flush);
}

LineConnection::~LineConnection() = default;

void LineConnection::read()
{
    const ssize_t size = m_incoming.receive(m_socket.get(), BytesOfTurn);
    if (size == -1 && errno != EAGAIN && errno != EINTR)
        return close();
    m_hasEnded = size == 0;
    goOn();
}

/*! Waits for what comes next: room for an answer, the turn of a line that is there, more of one, or the end. */
void LineConnection::goOn()
{
    m_readable.setEnabled(false);
    m_writable.setEnabled(m_outgoing.size() > 0);
    if (m_outgoing.size() > 0)
        return;
    const int size = m_incoming.size();
    const bool isWhole =
        size > m_searched && std::memchr(m_incoming.data() + m_searched, '\n', size_t(size - m_searched));
    if (isWhole) {
        // One at a time, so that others have their turns.
        QMetaObject::invokeMethod(this, &LineConnection::takeLine, Qt::QueuedConnection);
        return;
    }
    m_searched = size;
    if (size > LongestLine)
        endWith(QStringLiteral("a line is longer than %1 KiB").arg(LongestLine / 1024));
    else if (m_hasEnded && size > 0)
        endWith(QStringLiteral("the last line has no end"));
    else if (m_hasEnded)
        close();
    else
        m_readable.setEnabled(true);
}

void LineConnection::takeLine()
{
    const auto *end = static_cast<const char *>(std::memchr(m_incoming.data(), '\n', size_t(m_incoming.size())));
    const int size = int(end - m_incoming.data());
    m_searched = 0;
    if (size > LongestLine)
        return endWith(QStringLiteral("a line is longer than %1 KiB").arg(LongestLine / 1024));
    const QByteArray answer = m_answer(QByteArray::fromRawData(m_incoming.data(), size));
    m_incoming.pass(size + 1);
    write(answer);
}

/*! The last answer: nothing that follows can be understood. */
void LineConnection::endWith(const QString &reason)
{
    m_incoming.clear();
    m_searched = 0;
    m_hasEnded = true;
    write(m_refuse(reason));
}

void LineConnection::write(const QByteArray &answer)
{
    m_outgoing.append(answer.constData(), answer.size());
    m_outgoing.append("\n", 1);
    flush();
}

void LineConnection::flush()
{
    while (m_outgoing.size() > 0 && m_outgoing.transmit(m_socket.get()) > 0) { }
    if (m_outgoing.size() > 0 && errno != EAGAIN && errno != EINTR)
        close();
    else
        goOn();
}

void LineConnection::close()
{
    m_readable.setEnabled(false);
    m_writable.setEnabled(false);
    m_incoming.clear();
    m_outgoing.clear();
    m_socket.reset();
    Q_EMIT closed();
}

} // namespace morvek
