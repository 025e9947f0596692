// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_CONTROLLINK_H
#define MORVEK_CONTROLLINK_H

#include "filedescriptor.h"
#include "zopchangeset.h"

#include <QtNetwork/QLocalSocket>

namespace morvek {

class ZopPath;

/*! One connection between a client and the daemon that serves a control object; updates pass both ways. */
class ControlLink : public QObject
{
    Q_OBJECT

public:
    /*! Takes over the connected socket, whose control object has the path \a path. */
    ControlLink(FileDescriptor socket, const ZopPath &path, QObject *parent);

    /*!
     * A socket that is connected to the daemon. Not open, with errno, when there is none: isNobody() tells that from
     * what only hinders this process at present.
     */
    static FileDescriptor connectTo(const ZopPath &path, QString *error);
    /*! A socket that listens at the file \a name of the folder of \a path. */
    static FileDescriptor listenAt(const ZopPath &path, const QByteArray &name, QString *error);
    static bool isOwnPeer(int socket);
    /*! Whether \a error of connectTo() means that nobody serves the object for this user. */
    static bool isNobody(int error);

    bool send(const ZopChangeset &changes);
    /*! Whether the other side can still be written to. */
    bool isAlive() const;
    /*! Whether the other side leaves unread more than is kept for it. */
    bool isFull() const;
    /*! Ends the connection, whatever is under way. */
    void drop();

Q_SIGNALS:
    void received(const morvek::ZopChangeset &changes);
    /*! The other side is gone; nothing is received any more. */
    void closed();

private:
    void readLater();
    void readFrames();

    QByteArray m_file; // of the control object
    bool m_readsLater = false;
    bool m_isDropped = false; // what was read before may still be buffered
    QLocalSocket m_socket;
};

} // namespace morvek

#endif
