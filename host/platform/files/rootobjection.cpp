// SPDX-License-Identifier: Apache-2.0
#include "rootobjection.h"

#include "owngroup.h"
#include "zoppath.h"

#include <QtCore/QFile>

#include <cerrno>
#include <climits>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace morvek {

namespace {

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

} // namespace

RootObjection RootObjection::to(const QByteArray &root, struct stat *status)
{
    const QString another = QStringLiteral("set ZOP_ROOT to a folder of your own");
    if (root.isEmpty())
        return {QStringLiteral("there is no root: neither ZOP_ROOT nor XDG_RUNTIME_DIR is set"), another};
    const QString shown = QLatin1Char('"') + QFile::decodeName(root) + QLatin1Char('"');
    const QString subject = QLatin1String("the root ") + shown;
    if (!root.startsWith('/') || (root + '/').contains("/./") || (root + '/').contains("/../"))
        return {subject + QLatin1String(" is not a plain absolute path"),
                QStringLiteral("set ZOP_ROOT to one that begins with \"/\" and goes through neither \".\" nor \"..\"")};
    const bool exists = fstatat(AT_FDCWD, root.constData(), status, 0) == 0;
    const int error = errno;
    if (!exists && error != ENOENT)
        return {subject + QLatin1String(": ") + systemError(error), another};
    if (exists && !S_ISDIR(status->st_mode))
        return {subject + QLatin1String(" is not a directory"), another};
    if (exists && status->st_uid != geteuid())
        return {subject + QLatin1String(" belongs to another user"), another};
    if (exists && status->st_mode & (S_IRWXG | S_IRWXO))
        return {subject + QLatin1String(" is open to other users (wanted: mode 0700)"),
                QStringLiteral("close it with 'chmod 700 %1'").arg(shown)};
    const QString reason = exchange(root);
    return {reason, reason.isEmpty() ? QString() : QStringLiteral("set ZOP_ROOT to a folder in a place of your own")};
}

} // namespace morvek
