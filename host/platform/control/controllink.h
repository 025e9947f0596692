// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_CONTROLLINK_H
#define MORVEK_CONTROLLINK_H

#include "filedescriptor.h"
#include "passingbytes.h"
#include "zopchangeset.h"

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <memory>

namespace morvek {

class ZopPath;

/*! One connection between a client and the daemon that serves a control object; updates pass both ways. */
class ControlLink : public QObject
{
    Q_OBJECT

public:
    /*! What a connection may hold without being looked at, in bytes. */
    static constexpr qint64 Share = 256 * 1024;

    /*! Takes over the connected socket, whose control object has the path \a path. */
    ControlLink(FileDescriptor socket, const ZopPath &path, QObject *parent);

    /*! What stands for a reply to the request \a message with the identifier \a id that cannot be had. */
    static ZopChangeset refusal(const ZopVariant &message, const ZopVariant &id, const QString &reason);

    /*!
     * Tells what comes as soon as it is read. Otherwise it has a turn of its own, so that what the other side had
     * written into state objects before is told first.
     */
    void hearAtOnce() { m_isHeardAtOnce = true; }
    /*! False when the other side is gone, has too much to read already, or \a changes are too large. */
    bool send(const ZopChangeset &changes);
    bool isOpen() const { return m_socket.isOpen(); }
    /*! Whether the other side can still be written to. */
    bool isAlive() const;
    /*! Whether the other side leaves unread more than is kept for it. */
    bool isFull() const;
    /*! How many bytes wait here, for either side. */
    qint64 held() const { return qint64(m_incoming.size()) + m_outgoing.size(); }
    /*! Ends the connection, whatever is under way. The \a reason is told unless it is empty. */
    void drop(const QString &reason = QString());

Q_SIGNALS:
    void received(const morvek::ZopChangeset &changes);
    /*! More has come to wait here than the connection's share. */
    void grown();
    /*! The other side is gone; nothing is received any more. */
    void closed();

private:
    void read();
    void hearOn();
    void takeAwaitedTurn();
    void takeTurn();
    qint64 frameSize() const;
    bool isFrameWhole() const;
    bool takeFrame(ZopChangeset *changes);
    bool flush();
    void awaitRoom();

    QByteArray m_file; // of the control object
    FileDescriptor m_socket;
    QSocketNotifier m_readable;
    std::unique_ptr<QSocketNotifier> m_writable; // once something had to wait
    PassingBytes m_incoming;
    PassingBytes m_outgoing;
    bool m_isHeardAtOnce = false;
    bool m_awaitsTurn = false;
};

} // namespace morvek

#endif
