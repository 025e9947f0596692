// SPDX-License-Identifier: Apache-2.0
#include "rootlock.h"

#include "fileplace.h"
#include "zoppath.h"
#include "zoproot.h"

#include <QtCore/QFile>

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvek {

namespace {

const char TopFolder[] = "/zop";
// No object's name begins with a dot.
const char LockFile[] = "/.morvek-hostd.lock";

/*! Not open, with errno, when that cannot be had. */
FileDescriptor openLockFile(const QByteArray &path)
{
    // The file stays when its holder ends: another process may have it open already, and would hold the lock of a file
    // without a name. What is no file holds nothing.
    struct stat status;
    if (lstat(path.constData(), &status) == 0 && !S_ISREG(status.st_mode))
        clearPlace(path);
    return FileDescriptor(
        open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR));
}

struct stat statusOf(const FileDescriptor &file)
{
    struct stat status = {};
    fstat(file.get(), &status);
    return status;
}

} // namespace

RootLock::Result RootLock::take(const QVector<Service> &services, QString *error)
{
    m_services = services;
    const ZopRoot present = ZopRoot::look();
    if (present.state == ZopRoot::Unusable) {
        *error = present.reason + QLatin1String(": ") + present.mend;
        return Unusable;
    }
    const ZopPath top = ZopPath::directory(QLatin1String(TopFolder));
    if (!top.isValid()) {
        *error = top.error();
        return Unusable;
    }
    if (!top.makeFolder(error))
        return Unusable;
    const QByteArray root = top.folder().chopped(int(sizeof TopFolder) - 1);
    m_root = QFile::decodeName(root);
    m_path = root + LockFile;
    for (;;) {
        FileDescriptor file = openLockFile(m_path);
        if (!file.isOpen()) {
            *error = QStringLiteral("cannot lock the root \"%1\": %2").arg(m_root, systemError(errno));
            return Unusable;
        }
        // What could not be looked at for a while may be what this has held all the time.
        if (m_file.isOpen() && isSameFile(statusOf(file), statusOf(m_file)))
            return Taken;
        const Result result = lock(file, error);
        if (result != Taken)
            return result;
        m_file = std::move(file);
        if (isTaken())
            return Taken;
    }
}

RootLock::Result RootLock::keep(QString *error)
{
    return isTaken() ? Taken : take(m_services, error);
}

/*! Whether the file whose lock this has is the one that counts. */
bool RootLock::isTaken() const
{
    struct stat named;
    return m_file.isOpen() && lstat(m_path.constData(), &named) == 0 && isSameFile(named, statusOf(m_file));
}

RootLock::Result RootLock::lock(const FileDescriptor &file, QString *error) const
{
    for (const Service service : qAsConst(m_services)) {
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        lock.l_start = off_t(service);
        lock.l_len = 1;
        if (fcntl(file.get(), F_OFD_SETLK, &lock) == 0)
            continue;
        const bool isHeld = errno == EAGAIN || errno == EACCES;
        *error = isHeld ? QStringLiteral("another morvek-hostd publishes below \"%1\"").arg(m_root)
                        : QStringLiteral("cannot lock the root \"%1\": %2").arg(m_root, systemError(errno));
        return isHeld ? Held : Unusable;
    }
    return Taken;
}

} // namespace morvek
