// SPDX-License-Identifier: Apache-2.0
#include "listeningsocket.h"

#include "folderlock.h"
#include "localsocket.h"

#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <cerrno>
#include <chrono>
#include <utility>

#include <sys/socket.h>

namespace morvek {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds AcceptPause = 100ms;

} // namespace

ListeningSocket::ListeningSocket(const ZopPath &path, const QByteArray &name, Admit admit)
    : m_path(path),
      m_name(name),
      m_place(path.isValid() ? path.placeOf(name) : FilePlace()),
      m_admit(std::move(admit))
{
}

ListeningSocket::~ListeningSocket()
{
    if (!m_listener.isOpen())
        return;
    // Not what another process has put there, whatever has become of the root meanwhile.
    m_path.lookAgain();
    QString error;
    if (isInPlace() && FolderLock(m_path, &error).isHeld() && isInPlace())
        m_place.remove();
}

bool ListeningSocket::isFree(QString *error) const
{
    struct stat status;
    if (!m_place.status(&status) || !S_ISSOCK(status.st_mode))
        return true;
    if (LocalSocket::connectTo(m_path, m_name, error).isOpen()) {
        *error = QStringLiteral("another daemon serves it");
        return false;
    }
    return LocalSocket::isNobody(errno);
}

bool ListeningSocket::listen(QString *error)
{
    // It gets its name when it listens: whoever sees the name can connect. What was there goes first, so that its going
    // is seen too.
    const QByteArray name = (m_name.startsWith('.') ? m_name : '.' + m_name) + ".new";
    const FilePlace fresh = m_path.placeOf(name);
    fresh.clear();
    FileDescriptor listener = LocalSocket::listenAt(m_path, name, error);
    if (!listener.isOpen())
        return false;
    if (!fresh.status(&m_socket) || !m_place.clear() || !fresh.rename(m_place)) {
        *error = systemError(errno);
        return false;
    }
    m_notifier.reset();
    m_listener = std::move(listener);
    m_notifier = std::make_unique<QSocketNotifier>(m_listener.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { accept(); });
    error->clear();
    return true;
}

bool ListeningSocket::isInPlace() const
{
    struct stat present;
    return m_listener.isOpen() && m_place.status(&present) && isSameFile(present, m_socket);
}

bool ListeningSocket::keep(QString *error)
{
    if (isInPlace())
        return true;
    const FolderLock lock(m_path, error);
    return lock.isHeld() && isFree(error) && listen(error);
}

void ListeningSocket::accept()
{
    FileDescriptor socket(accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket.isOpen() && (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS)) {
        // The client goes on waiting; asking at once again would only burn time.
        m_notifier->setEnabled(false);
        QTimer::singleShot(AcceptPause, m_notifier.get(), [this] { m_notifier->setEnabled(true); });
    }
    pid_t client = 0;
    if (socket.isOpen() && LocalSocket::isOwnPeer(socket.get(), &client))
        m_admit(std::move(socket), client);
}

} // namespace morvek
