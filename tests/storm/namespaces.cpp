// SPDX-License-Identifier: Apache-2.0
#include "namespaces.h"

#include <QtCore/QFile>

#include <cerrno>
#include <cstring>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

QString systemText(const char *what)
{
    return QStringLiteral("%1: %2").arg(QLatin1String(what), QString::fromLocal8Bit(std::strerror(errno)));
}

bool put(const char *name, const QByteArray &text)
{
    QFile file(QString::fromLatin1(name));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) == text.size();
}

/*! Namespaces of \a kinds and a user namespace around them, whose root is who this is now. */
QString enterAsRoot(int kinds)
{
    const QByteArray user = QByteArray::number(geteuid());
    const QByteArray group = QByteArray::number(getegid());
    if (unshare(CLONE_NEWUSER | kinds) != 0)
        return systemText("user namespaces are not permitted");
    put("/proc/self/setgroups", "deny");
    const bool mapped = put("/proc/self/uid_map", "0 " + user + " 1") && put("/proc/self/gid_map", "0 " + group + " 1");
    return mapped ? QString() : systemText("the namespace's user cannot be mapped");
}

} // namespace

QString enterMountNamespace()
{
    if (unshare(CLONE_NEWNS) != 0) {
        const QString obstacle = enterAsRoot(CLONE_NEWNS);
        if (!obstacle.isEmpty())
            return obstacle;
    }
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return systemText("mounts cannot be made private");
    return QString();
}

QString enterUserNamespace()
{
    return enterAsRoot(0);
}
