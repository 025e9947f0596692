// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTKIT_STAGECONNECTION_H
#define MORVEK_TESTKIT_STAGECONNECTION_H

#include <QtCore/QDeadlineTimer>
#include <QtCore/QJsonObject>
#include <QtNetwork/QLocalSocket>

namespace morvek {

/*! A client of the stage of a root. It waits without the event loop: nothing else happens meanwhile. */
class StageConnection
{
public:
    /*! False when nobody is there. */
    bool connectTo(const QString &root, QDeadlineTimer deadline);
    void disconnect();

    /*! \a request is JSON in one line, to \a root if it is not connected. False when there is no answer. */
    bool ask(const QString &root, const QByteArray &request, QDeadlineTimer deadline, QJsonObject *answer);

private:
    QLocalSocket m_socket;
};

} // namespace morvek

#endif
