// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_CONTROLSERVER_H
#define MORVEK_CONTROLSERVER_H

#include "filedescriptor.h"
#include "zopbackend.h"
#include "zoppath.h"

#include <QtCore/QHash>
#include <QtCore/QObject>

#include <memory>

#include <sys/stat.h>

class QSocketNotifier;

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
    bool isFree(QString *error) const;
    bool listen(QString *error);
    bool isInPlace() const;
    void accept();
    bool refuse(ControlLink *link, const ZopChangeset &reply, QString *error);

    ZopPath m_path;
    FileDescriptor m_listener;
    struct stat m_socket = {}; // the file that stands for the listener
    QSocketNotifier *m_notifier = nullptr;
    std::shared_ptr<ClientCrowd> m_crowd;
    QHash<int, ControlLink *> m_links; // by the number that stands in "peer"
    int m_lastPeer = 0;
};

} // namespace morvek

#endif
