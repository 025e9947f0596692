// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_CONTROLSERVER_H
#define MORVEK_CONTROLSERVER_H

#include "listeningsocket.h"
#include "zopbackend.h"

#include <QtCore/QHash>
#include <QtCore/QObject>

#include <memory>

namespace morvek {

class ClientCrowd;
class ControlLink;

/*! The daemon's end of a control object. Requests pass by and are never kept. */
class ControlServer : public QObject, public ZopBackend
{
    Q_OBJECT

public:
    ControlServer(const ZopPath &path, Tell tell);
    ~ControlServer() override;

    /*! Begins to serve; false when the path is taken, by another daemon for one. */
    bool start(QString *error) override;

    bool write(const ZopChangeset &changes, QString *error) override;
    bool check(QString *error) override;

private:
    void admit(FileDescriptor socket, pid_t client);
    bool refuse(ControlLink *link, const ZopChangeset &reply, QString *error);

    ZopPath m_path;
    std::shared_ptr<ClientCrowd> m_crowd;
    ListeningSocket m_listening;
    QHash<int, ControlLink *> m_links; // by the number that stands in "peer"
    int m_lastPeer = 0;
};

} // namespace morvek

#endif
