// SPDX-License-Identifier: Apache-2.0
#include "privatefile.h"

#include "filedescriptor.h"
#include "fileplace.h"
#include "zoppath.h"

#include <QtCore/QFile>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>

namespace morvek {

namespace {

const char FreshSuffix[] = ".new";

constexpr mode_t OwnerOnly = S_IRUSR | S_IWUSR;
constexpr qint64 LargestFile = 64 * 1024;

/*! The content of a file, but not of what a link, a pipe or a device stands for. */
QByteArray readFile(const QByteArray &name, QString *error)
{
    FileDescriptor descriptor(open(name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor.isOpen()) {
        if (errno != ENOENT)
            *error = systemError(errno);
        return {};
    }
    struct stat status;
    if (fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > LargestFile) {
        *error = QStringLiteral("is not a file of at most %1 KiB").arg(LargestFile / 1024);
        return {};
    }
    if (fchmod(descriptor.get(), OwnerOnly) != 0) { // whatever somebody has made of it
        *error = systemError(errno);
        return {};
    }
    QFile file;
    file.open(descriptor.release(), QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        *error = file.errorString();
    else if (content.isEmpty())
        *error = QStringLiteral("is empty");
    return content;
}

/*! The number of the system's error, or 0. */
int writeFile(const QByteArray &name, const QByteArray &content)
{
    clearPlace(name); // of what a run that died in between has left
    const FileDescriptor descriptor(open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, OwnerOnly));
    if (!descriptor.isOpen() || fchmod(descriptor.get(), OwnerOnly) != 0) // whatever the umask is
        return errno;
    const ssize_t written = write(descriptor.get(), content.constData(), size_t(content.size()));
    if (written >= 0 && written < content.size())
        return ENOSPC; // which would be the error of the next one
    return written == -1 || fsync(descriptor.get()) != 0 ? errno : 0;
}

} // namespace

PrivateFile::PrivateFile(const QByteArray &path)
    : m_path(path)
{
}

QString PrivateFile::path() const
{
    return QFile::decodeName(m_path);
}

QByteArray PrivateFile::read(QString *error) const
{
    error->clear();
    return readFile(m_path, error);
}

bool PrivateFile::write(const QByteArray &content, QString *error) const
{
    // A link in its place is replaced, not followed.
    const QByteArray fresh = m_path + FreshSuffix;
    int problem = writeFile(fresh, content);
    if (problem == 0 && rename(fresh.constData(), m_path.constData()) != 0)
        problem = errno;
    if (problem == 0)
        return true;
    unlink(fresh.constData());
    *error = systemError(problem);
    return false;
}

bool PrivateFile::remove(QString *error) const
{
    if (clearPlace(m_path) && clearPlace(m_path + FreshSuffix))
        return true;
    *error = systemError(errno);
    return false;
}

} // namespace morvek
