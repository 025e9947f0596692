// SPDX-License-Identifier: Apache-2.0
#include "zoppath.h"

#include "owngroup.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace morvek {

namespace {

// Leaves room for the dot and the suffix of a hidden file within the file system's 255 bytes.
constexpr int LongestName = 200;
constexpr int LongestPath = 2000;

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
        if (lstat(part.constData(), &status) != 0)
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
    const QString shown = QFile::decodeName(root);
    QString reason = exchangeOnTheWay(root);
    struct stat status;
    if (reason.isEmpty() && lstat(root.constData(), &status) == 0 && S_ISLNK(status.st_mode)
        && !isTrusted(status.st_uid))
        reason = QStringLiteral("\"%1\", %2").arg(shown, anothersText());
    if (reason.isEmpty()) {
        // A root that does not exist yet is none of a link either, but the folder that it is made in may be.
        char resolved[PATH_MAX];
        const QByteArray parent = root.left(qMax(1, root.lastIndexOf('/')));
        if (realpath(root.constData(), resolved) || realpath(parent.constData(), resolved))
            reason = exchangeOnTheWay(QByteArray(resolved) + '/');
    }
    return reason.isEmpty()
        ? QString()
        : QStringLiteral("the root \"%1\" could be exchanged by another user at %2").arg(shown, reason);
}

/*! Empty when \a root may be used; a root that does not exist yet may. */
QString distrust(const QByteArray &root)
{
    if (root.isEmpty())
        return QStringLiteral("there is no root: neither ZOP_ROOT nor XDG_RUNTIME_DIR is set");
    const QString shown = QFile::decodeName(root);
    if (!root.startsWith('/') || (root + '/').contains("/./") || (root + '/').contains("/../"))
        return QStringLiteral("the root \"%1\" is not a plain absolute path").arg(shown);
    struct stat status;
    const bool exists = stat(root.constData(), &status) == 0;
    if (!exists && errno != ENOENT)
        return QStringLiteral("the root \"%1\": %2").arg(shown, systemError(errno));
    if (exists && !S_ISDIR(status.st_mode))
        return QStringLiteral("the root \"%1\" is not a directory").arg(shown);
    if (exists && status.st_uid != geteuid())
        return QStringLiteral("the root \"%1\" belongs to another user").arg(shown);
    if (exists && status.st_mode & (S_IRWXG | S_IRWXO))
        return QStringLiteral("the root \"%1\" is open to other users (wanted: mode 0700)").arg(shown);
    return exchange(root);
}

} // namespace

ZopPath ZopPath::object(const QString &path)
{
    ZopPath result = directory(path);
    if (!result.isValid())
        return result;
    if (path.endsWith(QLatin1Char('/'))) {
        result.m_error = QStringLiteral("\"%1\" is a directory's path").arg(path);
        return result;
    }
    const int slash = result.m_folder.lastIndexOf('/');
    result.m_name = result.m_folder.mid(slash + 1);
    result.m_folder.truncate(slash);
    return result;
}

ZopPath ZopPath::directory(const QString &path)
{
    ZopPath result;
    QByteArray bytes = path.toUtf8();
    if (bytes.endsWith('/'))
        bytes.chop(1);
    const QList<QByteArray> names = bytes.split('/');
    const bool plain = names.size() > 1 && names.first().isEmpty() && bytes.size() <= LongestPath
        && std::all_of(names.begin() + 1, names.end(), isObjectName);
    if (!plain) {
        result.m_error = QStringLiteral("\"%1\" is not a path of names").arg(path);
        return result;
    }
    result.m_root = rootFolder();
    result.m_error = distrust(result.m_root);
    result.m_folder = result.m_root + bytes;
    return result;
}

bool ZopPath::makeFolder(QString *error) const
{
    int end = m_root.size();
    while (end != -1) {
        const QByteArray folder = m_folder.left(end);
        const bool made = mkdir(folder.constData(), S_IRWXU) == 0;
        if (made ? chmod(folder.constData(), S_IRWXU) != 0 : errno != EEXIST) { // whatever the umask was
            *error = QStringLiteral("cannot create \"%1\": %2").arg(QFile::decodeName(folder), systemError(errno));
            return false;
        }
        // Somebody else may have made the root since it was looked at.
        const QString reason = end == m_root.size() ? distrust(m_root) : QString();
        if (!reason.isEmpty()) {
            *error = reason;
            return false;
        }
        end = end == m_folder.size() ? -1 : m_folder.indexOf('/', end + 1);
        if (end == -1 && folder.size() < m_folder.size())
            end = m_folder.size();
    }
    return true;
}

bool ZopPath::isObjectName(const QByteArray &name)
{
    const auto isForbidden = [](char c) { return c == '/' || c == 0x7f || static_cast<unsigned char>(c) < ' '; };
    return !name.isEmpty() && name.size() <= LongestName && !name.startsWith('.')
        && std::none_of(name.begin(), name.end(), isForbidden) && QString::fromUtf8(name).toUtf8() == name;
}

QByteArray ZopPath::rootFolder()
{
    QByteArray root = qgetenv("ZOP_ROOT");
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (root.isEmpty() && !runtime.isEmpty())
        root = runtime + "/morvek-zop";
    while (root.size() > 1 && root.endsWith('/'))
        root.chop(1);
    return root;
}

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

} // namespace morvek
