// SPDX-License-Identifier: Apache-2.0
#include "controlserver.h"

#include "clientcrowd.h"
#include "controllink.h"
#include "folderlock.h"

#include <utility>

#include <sys/stat.h>

namespace morvek {

namespace {

QString peerName()
{
    return QStringLiteral("peer");
}

} // namespace

ControlServer::ControlServer(const ZopPath &path, Tell tell)
    : ZopBackend(std::move(tell)),
      m_path(path),
      m_crowd(ClientCrowd::instance()),
      m_listening(path, path.name(), [this](FileDescriptor socket, pid_t client) { admit(std::move(socket), client); })
{
}

ControlServer::~ControlServer() = default;

bool ControlServer::start(QString *error)
{
    const FolderLock lock(m_path, error);
    if (!lock.isHeld() || !m_listening.isFree(error))
        return false;
    struct stat status;
    if (m_path.place().status(&status) && !S_ISSOCK(status.st_mode)) {
        *error = QStringLiteral("a state object has this path");
        return false;
    }
    return m_listening.listen(error);
}

bool ControlServer::check(QString *error)
{
    return m_listening.keep(error);
}

bool ControlServer::write(const ZopChangeset &changes, QString *error)
{
    ZopChangeset reply = changes;
    ControlLink *link = m_links.value(reply.assignments.take(peerName()).toInt());
    if (link && link->send(reply))
        return true;
    if (!link || (link->isOpen() && !link->isAlive())) {
        *error = QStringLiteral("no such peer");
        return false;
    }
    return refuse(link, reply, error);
}

/*! A client must not wait for ever for the \a reply that it cannot be given. False, with the reason. */
bool ControlServer::refuse(ControlLink *link, const ZopChangeset &reply, QString *error)
{
    const bool isTooLarge = link->isOpen() && !link->isFull();
    *error = isTooLarge ? QStringLiteral("the reply is larger than 16 MiB")
                        : QStringLiteral("the client does not take its replies");
    const auto value = [&reply](const char *name) { return reply.assignments.value(QLatin1String(name)); };
    // Without the daemon, at least, it learns that there will be none.
    if (!isTooLarge || !link->send(ControlLink::refusal(value("res"), value("id"), *error)))
        link->drop();
    return false;
}

void ControlServer::admit(FileDescriptor socket, pid_t client)
{
    auto *link = new ControlLink(std::move(socket), m_path, this);
    if (!m_crowd->admit(link, client)) {
        delete link;
        return;
    }
    link->hearAtOnce();
    const int peer = ++m_lastPeer;
    m_links.insert(peer, link);
    connect(link, &ControlLink::received, this, [this, peer](const ZopChangeset &changes) {
        ZopChangeset request = changes;
        request.assignments.insert(peerName(), ZopVariant(peer));
        tell(request);
    });
    connect(link, &ControlLink::grown, this, [crowd = m_crowd] { crowd->makeRoom(); });
    connect(link, &ControlLink::closed, this, [this, peer, link] {
        m_links.remove(peer);
        link->deleteLater();
    });
}

} // namespace morvek
