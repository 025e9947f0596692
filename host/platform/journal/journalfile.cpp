// SPDX-License-Identifier: Apache-2.0
#include "journalfile.h"

#include "fileplace.h"
#include "lockwait.h"
#include "zoppath.h"
#include "zopwire.h"

#include <QtCore/QFile>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include <sys/stat.h>
#include <zlib.h>

namespace morvek {
namespace Journal {

// With narrower ones, the kernel refuses the locks that are used here.
static_assert(sizeof(off_t) == sizeof(qint64), "");

namespace {

/*! What is wrong with the header of \a file; empty when nothing is. */
QString readHeader(const FileDescriptor &file, Header *header)
{
    constexpr size_t KindSize = sizeof(Magic) - 1; // without the version
    const ssize_t got = pread(file.get(), header, sizeof(*header), 0);
    if (got < ssize_t(sizeof(Magic)) || std::memcmp(header->magic, Magic, KindSize) != 0)
        return QStringLiteral("this is no journal");
    if (header->magic[KindSize] != Magic[KindSize])
        return QStringLiteral("this is a journal of another version");
    if (got != ssize_t(sizeof(*header)) || header->checksum != headerChecksum(*header))
        return QStringLiteral("the header is damaged");
    // A marker of zeros would be found wherever nothing was written.
    if (header->marker == 0 || header->stateEnd < sizeof(*header)
        || header->stateEnd - sizeof(*header) > sizeof(RecordHeader) + LargestUpdate)
        return QStringLiteral("the header is absurd");
    return QString();
}

} // namespace

struct flock lockOn(LockedByte byte, short type)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return lock;
}

bool lockForWriting(const ZopPath &path, const FileDescriptor &file, QString *error)
{
    struct flock lock = lockOn(WritersByte, F_WRLCK);
    return waitForLock(
        path.file(), [&] { return fcntl(file.get(), F_OFD_SETLK, &lock); }, error);
}

quint32 checksum(const void *bytes, size_t size, quint32 start)
{
    return quint32(crc32_z(start, static_cast<const Bytef *>(bytes), size));
}

quint32 headerChecksum(const Header &header)
{
    return checksum(&header, offsetof(Header, checksum));
}

FileDescriptor openFile(const ZopPath &path, int flags, Header *header, QString *error)
{
    // Not blocking, as what another program put there may be a pipe.
    FileDescriptor file = path.place().open(flags | O_NOFOLLOW | O_NONBLOCK);
    if (!file.isOpen() && !isNoFile(errno)) {
        *error = errno == ENOENT ? noSuchObject() : systemError(errno);
        return file;
    }
    const QString trouble = file.isOpen() ? readHeader(file, header) : QStringLiteral("this is no file");
    if (!trouble.isEmpty()) {
        *error = malformed(path, trouble);
        file.reset();
        errno = EBADMSG;
    }
    return file;
}

bool names(const FilePlace &place, const FileDescriptor &file, qint64 *size)
{
    struct stat status;
    return fstat(file.get(), &status) == 0 && names(place, status, size);
}

bool names(const FilePlace &place, const struct stat &file, qint64 *size)
{
    struct stat there;
    if (!place.statusOfTarget(&there))
        return false;
    if (size)
        *size = there.st_size;
    return isSameFile(there, file);
}

qint64 sizeOf(int file)
{
    struct stat status;
    return fstat(file, &status) == 0 ? status.st_size : 0;
}

bool isNoFile(int error)
{
    return error == ELOOP || error == EISDIR || error == ENXIO;
}

QString noSuchObject()
{
    return QStringLiteral("no such object");
}

QString anotherObject()
{
    return QStringLiteral("another object has this path");
}

QString malformed(const ZopPath &path, const QString &reason)
{
    return QStringLiteral("malformed content in \"%1\": %2").arg(QFile::decodeName(path.file()), reason);
}

QString cutOff(const ZopPath &path)
{
    return malformed(path, QStringLiteral("something was cut off"));
}

QString tooMuchNonsense(const ZopPath &path)
{
    return malformed(path, QStringLiteral("more than %1 MiB of it are no records").arg(LargestNonsense >> 20));
}

} // namespace Journal
} // namespace morvek
