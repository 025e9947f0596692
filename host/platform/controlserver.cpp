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
    QString error;
    // Nobody may have taken the path while this daemon listened, so that what is there is its own.
    if (m_listener.isOpen() && FolderLock(m_path, &error).isHeld())
        unlink(m_path.file().constData());
}

bool ControlServer::start(QString *error)
{
    const FolderLock lock(m_path, error);
    if (!lock.isHeld())
        return false;
    const QByteArray file = m_path.file();
    struct stat status;
    const bool exists = lstat(file.constData(), &status) == 0;
    QString refusal;
    if (exists && (!S_ISSOCK(status.st_mode) || ControlLink::connectTo(m_path, &refusal).isOpen())) {
        *error = S_ISSOCK(status.st_mode) ? QStringLiteral("another daemon serves it")
                                          : QStringLiteral("a state object has this path");
        return false;
    }
    if (exists && !ControlLink::isNobody(errno)) {
        *error = refusal; // whether somebody serves it cannot be told
        return false;
    }
    // It gets its name when it listens: whoever sees the name can connect. What a dead daemon left goes first, so
    // that its going is seen too.
    const QByteArray fresh = m_path.hidden(".new");
    unlink(fresh.constData());
    FileDescriptor listener = ControlLink::listenAt(m_path, '.' + m_path.name() + ".new", error);
    if (!listener.isOpen())
        return false;
    unlink(file.constData());
    if (rename(fresh.constData(), file.constData()) != 0) {
        *error = systemError(errno);
        return false;
    }
    m_listener = std::move(listener);
    m_notifier = new QSocketNotifier(m_listener.get(), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &ControlServer::accept);
    return true;
}

bool ControlServer::write(const ZopChangeset &changes, QString *error)
{
    ZopChangeset reply = changes;
    ControlLink *link = m_links.value(reply.assignments.take(peerName()).toInt());
    if (!link || !link->isAlive()) {
        *error = QStringLiteral("no such peer");
        return false;
    }
    return link->send(reply) || refuse(link, reply, error);
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
