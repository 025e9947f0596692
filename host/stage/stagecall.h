// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_STAGECALL_H
#define MORVEK_HOSTD_STAGECALL_H

#include "filedescriptor.h"
#include "passingbytes.h"

#include <QtCore/QByteArray>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QString>

namespace morvek {

/*! A client's way to the stage of the root that the environment names. It waits, as a command does. */
class StageCall
{
public:
    /*! False when nobody answers there; \a error says why. */
    bool connect(QString *error);
    /*! False when nobody ever will: a root is used by nobody as long as something is wrong with it. */
    static bool isPossible(QString *error);
    /*! Sends \a line and waits for its answer; false when there is none until \a deadline. */
    bool ask(const QByteArray &line, QDeadlineTimer deadline, QByteArray *answer, QString *error);

private:
    bool await(short events, QDeadlineTimer deadline) const;
    bool send(const QByteArray &line, QDeadlineTimer deadline);
    bool receive(QDeadlineTimer deadline, QByteArray *answer);

    FileDescriptor m_socket;
    PassingBytes m_incoming;
};

} // namespace morvek

#endif
