// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_LINECONNECTION_H
#define MORVEK_HOSTD_LINECONNECTION_H

#include "filedescriptor.h"
#include "passingbytes.h"

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <functional>

namespace morvek {

/*!
 * A client that sends lines, and gets a line for each, in order. Who does not read what it gets is not heard until it
 * does; so no client makes more wait here than one line and one answer.
 */
class LineConnection : public QObject
{
    Q_OBJECT

public:
    /*! The longest line, in bytes. */
    static constexpr int LongestLine = 256 * 1024;

    /*! What a line is answered with; and what stands for a line that never ends, with the reason. */
    using Answer = std::function<QByteArray(const QByteArray &line)>;
    using Refuse = std::function<QByteArray(const QString &reason)>;

    LineConnection(FileDescriptor socket, Answer answer, Refuse refuse, QObject *parent);
    ~LineConnection() override;

Q_SIGNALS:
    /*! Everything is answered, or the other side is gone. */
    void closed();

private:
    void read();
    void goOn();
    void takeLine();
    void endWith(const QString &reason);
    void write(const QByteArray &answer);
    void flush();
    void close();

    FileDescriptor m_socket;
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
    PassingBytes m_incoming;
    PassingBytes m_outgoing;
    Answer m_answer;
    Refuse m_refuse;
    int m_searched = 0; // of the incoming bytes, for the end of a line
    bool m_hasEnded = false;
};

} // namespace morvek

#endif
