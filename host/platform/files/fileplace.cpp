// SPDX-License-Identifier: Apache-2.0
#include "fileplace.h"

#include <QtCore/QRandomGenerator>

#include <cerrno>
#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

namespace morvek {

namespace {

/*! Long names are cut, as there may be no room for a longer one. */
QByteArray nameAside(const QByteArray &file)
{
    constexpr int Kept = 200;
    const int slash = file.lastIndexOf('/');
    return file.left(slash) + "/." + file.mid(slash + 1, Kept) + ".aside-"
        + QByteArray::number(QRandomGenerator::global()->generate64(), 16);
}

} // namespace

bool clearPlace(const QByteArray &file)
{
    if (unlink(file.constData()) == 0 || errno == ENOENT)
        return true;
    return errno == EISDIR
        && (rmdir(file.constData()) == 0 || rename(file.constData(), nameAside(file).constData()) == 0);
}

bool isSameFile(const struct stat &one, const struct stat &other)
{
    return one.st_ino == other.st_ino && one.st_dev == other.st_dev;
}

} // namespace morvek
