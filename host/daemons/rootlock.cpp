// SPDX-License-Identifier: Apache-2.0
#include "rootlock.h"

#include "zoppath.h"

#include <QtCore/QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvek {

namespace {

const char TopFolder[] = "/zop";
// No object's name begins with a dot.
const char LockFile[] = "/.morvek-hostd.lock";

} // namespace

RootLock::~RootLock()
{
    // The file stays: another process may have it open already, and would hold the lock of a file without a name.
    if (m_file != -1)
        close(m_file);
}

RootLock::Result RootLock::take(const QVector<Service> &services, QString *error)
{
    const ZopPath top = ZopPath::directory(QLatin1String(TopFolder));
    if (!top.isValid()) {
        *error = top.error();
        return Unusable;
    }
    if (!top.makeFolder(error))
        return Unusable;
    const QByteArray root = top.folder().chopped(int(sizeof TopFolder) - 1);
    m_root = QFile::decodeName(root);
    m_file = open((root + LockFile).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    if (m_file == -1) {
        *error = QStringLiteral("cannot lock the root \"%1\": %2").arg(m_root, systemError(errno));
        return Unusable;
    }
    for (const Service service : services) {
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        lock.l_start = off_t(service);
        lock.l_len = 1;
        if (fcntl(m_file, F_OFD_SETLK, &lock) == 0)
            continue;
        if (errno == EAGAIN || errno == EACCES) {
            *error = QStringLiteral("another morvek-hostd publishes below \"%1\"").arg(m_root);
            return Held;
        }
        *error = QStringLiteral("cannot lock the root \"%1\": %2").arg(m_root, systemError(errno));
        return Unusable;
    }
    return Taken;
}

} // namespace morvek
