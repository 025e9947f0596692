// SPDX-License-Identifier: Apache-2.0
#include "root.h"

#include "fileplace.h"
#include "rootobjection.h"
#include "zoppath.h"

#include <QtCore/QFile>

#include <atomic>
#include <ctime>
#include <limits>

#include <pthread.h>

namespace morvek {

namespace {

// A child process may become another user's at once.
std::atomic<int> forks {0};

constexpr qint64 Second = 1000 * 1000 * 1000;
constexpr qint64 LongAgo = std::numeric_limits<qint64>::min() / 2;

/*! In nanoseconds, as exact as it can be had without a system call. */
qint64 now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return time.tv_sec * Second + time.tv_nsec;
}

bool isSameFolder(const struct stat &one, const struct stat &other)
{
    return isSameFile(one, other) && one.st_mode == other.st_mode && one.st_uid == other.st_uid;
}

} // namespace

std::shared_ptr<Root> Root::instance()
{
    static const int isToldOfForks = pthread_atfork(nullptr, nullptr, [] { ++forks; });
    Q_UNUSED(isToldOfForks)
    thread_local std::weak_ptr<Root> current;
    const QByteArray path = folder();
    std::shared_ptr<Root> root = current.lock();
    if (!root || root->m_path != path) {
        root.reset(new Root(path));
        current = root;
    }
    return root;
}

void Root::lookAgain()
{
    m_lookedAt = LongAgo;
}

QByteArray Root::folder()
{
    QByteArray root = qgetenv("ZOP_ROOT");
    if (root.isEmpty()) {
        const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
        if (!runtime.isEmpty())
            root = runtime + "/morvek-zop";
    }
    while (root.size() > 1 && root.endsWith('/'))
        root.chop(1);
    return root;
}

QString Root::distrust()
{
    hold();
    return m_distrust;
}

bool Root::make(QString *error)
{
    const bool made = mkdir(m_path.constData(), S_IRWXU) == 0;
    if (made ? chmod(m_path.constData(), S_IRWXU) != 0 : errno != EEXIST) { // whatever the umask was
        *error = QStringLiteral("cannot create \"%1\": %2").arg(QFile::decodeName(m_path), systemError(errno));
        return false;
    }
    // Somebody else may have made it since it was looked at, or put it in the place of the one that is held.
    lookAgain();
    const QString reason = distrust();
    if (!reason.isEmpty())
        *error = reason;
    return reason.isEmpty();
}

/*! Whether the root is held; false with errno. */
bool Root::hold()
{
    const bool isRecent = m_forks == forks && now() - m_lookedAt < Second;
    if (m_folder.isOpen() && (isRecent || isInPlace()))
        return true;
    judge();
    return m_folder.isOpen();
}

/*! Whether the path still names the root that is held, and its judgement holds. */
bool Root::isInPlace()
{
    const int error = errno;
    struct stat present;
    const bool isSame = fstatat(AT_FDCWD, m_path.constData(), &present, 0) == 0 && isSameFolder(present, m_status)
        && m_user == geteuid();
    m_forks = forks;
    m_lookedAt = now();
    errno = error;
    return isSame;
}

void Root::judge()
{
    struct stat judged = {};
    do {
        m_user = geteuid();
        m_forks = forks;
        m_lookedAt = now();
        m_distrust = RootObjection::to(m_path, &judged).reason;
        m_folder.reset(m_distrust.isEmpty() ? ::openat(AT_FDCWD, m_path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC)
                                            : -1);
        if (!m_distrust.isEmpty())
            errno = EACCES;
    } while (m_folder.isOpen() && fstat(m_folder.get(), &m_status) == 0 && !isSameFolder(judged, m_status));
}

} // namespace morvek
