// SPDX-License-Identifier: Apache-2.0
#include "root.h"

#include "fileplace.h"
#include "owngroup.h"
#include "zoppath.h"

#include <QtCore/QFile>

#include <atomic>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <limits>

#include <pthread.h>
#include <sys/xattr.h>

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

QString anothersText()
{
    return QStringLiteral("which is another user's");
}

bool isTrusted(uid_t owner)
{
    return owner == geteuid() || owner == 0;
}

/*! Why others than this user may rename what stands in a folder; empty when none may. */
QString openness(const QByteArray &folder, const struct stat &status)
{
    const mode_t mode = status.st_mode;
    if (!S_ISDIR(mode) || mode & S_ISVTX || !(mode & (S_IWGRP | S_IWOTH)))
        return QString();
    if (mode & S_IWOTH)
        return QStringLiteral("where everybody may write");
    // With an access list, the group's bits are only the most that anybody on it may do.
    if (lgetxattr(folder.constData(), "system.posix_acl_access", nullptr, 0) > 0)
        return QStringLiteral("whose access list may let others write");
    return OwnGroup::objection(status.st_gid);
}

/*! Why another user could exchange a part of the way to \a path; empty when none could. */
QString exchangeOnTheWay(const QByteArray &path)
{
    for (int end = 0; end != -1; end = path.indexOf('/', end + 1)) {
        const QByteArray part = end == 0 ? QByteArrayLiteral("/") : path.left(end);
        struct stat status;
        if (fstatat(AT_FDCWD, part.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            return QString();
        const QString reason = isTrusted(status.st_uid) ? openness(part, status) : anothersText();
        if (!reason.isEmpty())
            return QStringLiteral("\"%1\", %2").arg(QFile::decodeName(part), reason);
    }
    return QString();
}

/*! Why another user could exchange \a root, links on the way to it resolved; empty when none could. */
QString exchange(const QByteArray &root)
{
    QString reason = exchangeOnTheWay(root);
    struct stat status;
    if (reason.isEmpty() && fstatat(AT_FDCWD, root.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0
        && S_ISLNK(status.st_mode) && !isTrusted(status.st_uid))
        reason = QStringLiteral("\"%1\", %2").arg(QFile::decodeName(root), anothersText());
    if (reason.isEmpty()) {
        // A root that does not exist yet is none of a link either, but the folder that it is made in may be.
        char resolved[PATH_MAX];
        const QByteArray parent = root.left(qMax(1, root.lastIndexOf('/')));
        if ((realpath(root.constData(), resolved) || realpath(parent.constData(), resolved)) && root != resolved)
            reason = exchangeOnTheWay(QByteArray(resolved) + '/');
    }
    return reason.isEmpty() ? QString()
                            : QStringLiteral("the root \"%1\" could be exchanged by another user at %2")
                                  .arg(QFile::decodeName(root), reason);
}

/*! Empty when \a root, which is found to be as \a status says, may be used; one that does not exist yet may. */
QString objection(const QByteArray &root, struct stat *status)
{
    if (root.isEmpty())
        return QStringLiteral("there is no root: neither ZOP_ROOT nor XDG_RUNTIME_DIR is set");
    const auto shown = [&root] { return QFile::decodeName(root); };
    if (!root.startsWith('/') || (root + '/').contains("/./") || (root + '/').contains("/../"))
        return QStringLiteral("the root \"%1\" is not a plain absolute path").arg(shown());
    const bool exists = fstatat(AT_FDCWD, root.constData(), status, 0) == 0;
    const int error = errno;
    if (!exists && error != ENOENT)
        return QStringLiteral("the root \"%1\": %2").arg(shown(), systemError(error));
    if (exists && !S_ISDIR(status->st_mode))
        return QStringLiteral("the root \"%1\" is not a directory").arg(shown());
    if (exists && status->st_uid != geteuid())
        return QStringLiteral("the root \"%1\" belongs to another user").arg(shown());
    if (exists && status->st_mode & (S_IRWXG | S_IRWXO))
        return QStringLiteral("the root \"%1\" is open to other users (wanted: mode 0700)").arg(shown());
    return exchange(root);
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
        m_distrust = objection(m_path, &judged);
        m_folder.reset(m_distrust.isEmpty() ? ::openat(AT_FDCWD, m_path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC)
                                            : -1);
        if (!m_distrust.isEmpty())
            errno = EACCES;
    } while (m_folder.isOpen() && fstat(m_folder.get(), &m_status) == 0 && !isSameFolder(judged, m_status));
}

} // namespace morvek
