// SPDX-License-Identifier: Apache-2.0
#include "controlserver.h"

#include "clientcrowd.h"
#include "controllink.h"
#include "folderlock.h"

#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <cerrno>
#include <chrono>

#include <sys/socket.h>
#include <sys/stat.h>

namespace morvek {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds AcceptPause = 100ms;

QString peerName()
{
    return QStringLiteral("peer");
}

} // namespace

ControlServer::ControlServer(const ZopPath &path, Tell tell)
    : ZopBackend(std::move(tell)),
      m_path(path),
      m_crowd(ClientCrowd::instance())
{
}

ControlServer::~ControlServer()
{
    // Not what another daemon has put there, whatever has become of the root meanwhile.
    m_path.lookAgain();
    QString error;
    if (isInPlace() && FolderLock(m_path, &error).isHeld() && isInPlace())
        m_path.place().remove();
}

bool ControlServer::start(QString *error)
{
    const FolderLock lock(m_path, error);
    if (!lock.isHeld() || !isFree(error))
        return false;
    struct stat status;
    if (m_path.place().status(&status) && !S_ISSOCK(status.st_mode)) {
        *error = QStringLiteral("a state object has this path");
        return false;
    }
    return listen(error);
}

bool ControlServer::check(QString *error)
{
    if (isInPlace())
        return true;
    const FolderLock lock(m_path, error);
    return lock.isHeld() && isFree(error) && listen(error);
}

/*! Whether nobody serves the path; false, too, when that cannot be told. */
bool ControlServer::isFree(QString *error) const
{
    struct stat status;
    if (!m_path.place().status(&status) || !S_ISSOCK(status.st_mode))
        return true;
    if (ControlLink::connectTo(m_path, error).isOpen()) {
        *error = QStringLiteral("another daemon serves it");
        return false;
    }
    return ControlLink::isNobody(errno);
}

/*! Takes the path, under the folder's lock. Whoever is connected stays so. */
bool ControlServer::listen(QString *error)
{
    // It gets its name when it listens: whoever sees the name can connect. What was there goes first, so that its going
    // is seen too.
    const FilePlace fresh = m_path.hidden(".new");
    fresh.clear();
    FileDescriptor listener = ControlLink::listenAt(m_path, '.' + m_path.name() + ".new", error);
    if (!listener.isOpen())
        return false;
    if (!fresh.status(&m_socket) || !m_path.place().clear() || !fresh.rename(m_path.place())) {
        *error = systemError(errno);
        return false;
    }
    delete m_notifier;
    m_listener = std::move(listener);
    m_notifier = new QSocketNotifier(m_listener.get(), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &ControlServer::accept);
    error->clear();
    return true;
}

bool ControlServer::isInPlace() const
{
    struct stat present;
    return m_listener.isOpen() && m_path.place().status(&present) && isSameFile(present, m_socket);
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

void ControlServer::accept()
{
    FileDescriptor socket(accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket.isOpen() && (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS)) {
        // The client goes on waiting; asking at once again would only burn time.
        m_notifier->setEnabled(false);
        QTimer::singleShot(AcceptPause, m_notifier, [this] { m_notifier->setEnabled(true); });
    }
    pid_t client = 0;
    if (!socket.isOpen() || !ControlLink::isOwnPeer(socket.get(), &client))
        return;
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
