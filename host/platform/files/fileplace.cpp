// SPDX-License-Identifier: Apache-2.0
#include "fileplace.h"

#include "root.h"

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
    const int start = file.lastIndexOf('/') + 1;
    return file.left(start) + '.' + file.mid(start, Kept) + ".aside-"
        + QByteArray::number(QRandomGenerator::global()->generate64(), 16);
}

} // namespace

FilePlace::FilePlace(const std::shared_ptr<Root> &root, const QByteArray &name)
    : m_root(root),
      m_name(name)
{
}

QByteArray FilePlace::path() const
{
    return m_root ? m_root->path() + '/' + m_name : QByteArray();
}

/*! What \a call gives, which gets the root's descriptor and the name there. */
template<typename Call>
int FilePlace::attempt(const Call &call) const
{
    errno = ENOENT;
    return m_root ? m_root->below([&](int root) { return call(root, m_name.constData()); }) : -1;
}

FileDescriptor FilePlace::open(int flags, mode_t mode) const
{
    return FileDescriptor(
        attempt([&](int root, const char *name) { return openat(root, name, flags | O_CLOEXEC, mode); }));
}

bool FilePlace::status(struct stat *status) const
{
    return attempt([&](int root, const char *name) { return fstatat(root, name, status, AT_SYMLINK_NOFOLLOW); }) == 0;
}

bool FilePlace::statusOfTarget(struct stat *status) const
{
    return attempt([&](int root, const char *name) { return fstatat(root, name, status, 0); }) == 0;
}

bool FilePlace::isReadable() const
{
    return attempt([](int root, const char *name) { return faccessat(root, name, R_OK, AT_EACCESS); }) == 0;
}

bool FilePlace::makeFolder() const
{
    const auto make = [](int root, const char *name) {
        const int made = mkdirat(root, name, S_IRWXU);
        return made == 0 ? fchmodat(root, name, S_IRWXU, 0) : made; // whatever the umask was
    };
    return attempt(make) == 0;
}

bool FilePlace::remove() const
{
    return attempt([](int root, const char *name) { return unlinkat(root, name, 0); }) == 0;
}

bool FilePlace::clear() const
{
    return attempt([](int root, const char *name) { return clearPlace(name, root) ? 0 : -1; }) == 0;
}

bool FilePlace::link(const FilePlace &other) const
{
    const char *second = other.m_name.constData();
    return attempt([&](int root, const char *name) { return linkat(root, name, root, second, 0); }) == 0;
}

bool FilePlace::rename(const FilePlace &other) const
{
    const char *second = other.m_name.constData();
    return attempt([&](int root, const char *name) { return renameat(root, name, root, second); }) == 0;
}

bool clearPlace(const QByteArray &file, int folder)
{
    if (unlinkat(folder, file.constData(), 0) == 0 || errno == ENOENT)
        return true;
    return errno == EISDIR
        && (unlinkat(folder, file.constData(), AT_REMOVEDIR) == 0
            || renameat(folder, file.constData(), folder, nameAside(file).constData()) == 0);
}

bool isSameFile(const struct stat &one, const struct stat &other)
{
    return one.st_ino == other.st_ino && one.st_dev == other.st_dev;
}

} // namespace morvek
