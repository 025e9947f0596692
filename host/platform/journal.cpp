// SPDX-License-Identifier: Apache-2.0
#include "journal.h"

#include "folderlock.h"
#include "hostlog.h"
#include "krellogger.h"
#include "zopwire.h"

#include <QtCore/QFile>
#include <QtCore/QRandomGenerator>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace morvek {
namespace Journal {

namespace {

constexpr char Magic[8] = {'Z', 'O', 'P', 'J', 'R', 'N', 'L', '1'};
constexpr mode_t OwnerOnly = S_IRUSR | S_IWUSR;

// With narrower ones, the kernel refuses the locks that are used here.
static_assert(sizeof(off_t) == sizeof(qint64), "");

struct Header
{
    char magic[sizeof(Magic)];
    quint64 marker;
    Identity identity;
    quint64 stateEnd; // offset behind the first record
    quint64 checksum;
};

struct RecordHeader
{
    quint64 marker;
    quint64 writer;
    quint32 size;
    quint32 checksum;
};

// The bytes that are locked: each generation has one for its writers and one for its readers.
enum LockedByte { WritersByte, ReadersByte };

quint32 checksum(const void *bytes, size_t size, quint32 start = 0)
{
    return quint32(crc32_z(start, static_cast<const Bytef *>(bytes), size));
}

quint32 headerChecksum(const Header &header)
{
    return checksum(&header, offsetof(Header, checksum));
}

quint32 recordChecksum(const RecordHeader &header, const char *payload)
{
    return checksum(payload, header.size, checksum(&header.writer, sizeof(header.writer)));
}

struct flock lockOn(LockedByte byte, short type)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return lock;
}

bool readHeader(const FileDescriptor &file, Header *header)
{
    return pread(file.get(), header, sizeof(*header), 0) == ssize_t(sizeof(*header))
        && std::memcmp(header->magic, Magic, sizeof(Magic)) == 0 && header->checksum == headerChecksum(*header);
}

FileDescriptor openFile(const ZopPath &path, int flags, Header *header, QString *error)
{
    // Not blocking, as what another program put there may be a pipe.
    FileDescriptor file(open(path.file().constData(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.isOpen()) {
        *error = errno == ENOENT ? QStringLiteral("no such object") : systemError(errno);
    } else if (!readHeader(file, header)) {
        *error = QStringLiteral("malformed content in \"%1\"").arg(QFile::decodeName(path.file()));
        file.reset();
        errno = EBADMSG;
    }
    return file;
}

/*! Whether \a path names the file that is open as \a file, and then how large it is. */
bool names(const QByteArray &path, const FileDescriptor &file, qint64 *size = nullptr)
{
    struct stat there;
    struct stat here;
    if (stat(path.constData(), &there) != 0 || fstat(file.get(), &here) != 0)
        return false;
    if (size)
        *size = there.st_size;
    return there.st_ino == here.st_ino && there.st_dev == here.st_dev;
}

QString tooLarge()
{
    return QStringLiteral("the update is too large");
}

bool writeWhole(int fd, const QByteArray &bytes)
{
    const ssize_t written = write(fd, bytes.constData(), size_t(bytes.size()));
    if (written >= 0 && written < bytes.size())
        errno = ENOSPC;
    return written == bytes.size();
}

QByteArray makeRecord(quint64 marker, quint64 writer, const ZopChangeset &changes)
{
    const QByteArray payload = encodeChangeset(changes);
    RecordHeader header = {marker, writer, quint32(payload.size()), 0};
    header.checksum = recordChecksum(header, payload.constData());
    return QByteArray(reinterpret_cast<const char *>(&header), sizeof(header)) + payload;
}

/*! Writes a complete file with \a state as its first record to \a target. */
bool writeGeneration(const QByteArray &target, Identity identity, const ZopChangeset &state, QString *error)
{
    Header header = {};
    std::memcpy(header.magic, Magic, sizeof(Magic));
    header.marker = QRandomGenerator::global()->generate64();
    header.identity = identity;
    const QByteArray record = makeRecord(header.marker, 0, state);
    if (record.size() > LargestUpdate) {
        *error = tooLarge();
        return false;
    }
    header.stateEnd = sizeof(header) + quint64(record.size());
    header.checksum = headerChecksum(header);

    unlink(target.constData());
    const FileDescriptor file(open(target.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, OwnerOnly));
    const QByteArray content = QByteArray(reinterpret_cast<const char *>(&header), sizeof(header)) + record;
    if (file.isOpen() && fchmod(file.get(), OwnerOnly) == 0 && writeWhole(file.get(), content))
        return true;
    *error = systemError(errno);
    unlink(target.constData());
    return false;
}

/*! Whether somebody still reads the generation before the one that is open as \a current. */
bool isPreviousRead(const ZopPath &path, const FileDescriptor &current)
{
    const QByteArray previous = path.hidden(".old");
    const FileDescriptor file(open(previous.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    if (!file.isOpen())
        return errno != ENOENT; // it cannot be told
    // A writer that was killed between its two steps leaves the current generation under this name.
    if (names(previous, current))
        return false;
    struct flock lock = lockOn(ReadersByte, F_WRLCK);
    return fcntl(file.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

} // namespace

bool exists(const ZopPath &path)
{
    struct stat status;
    return lstat(path.file().constData(), &status) == 0;
}

bool isGone(const ZopPath &path)
{
    struct stat status;
    return lstat(path.file().constData(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

bool create(const ZopPath &path, const ZopChangeset &values, QString *error)
{
    const FolderLock lock(path, error);
    if (!lock.isHeld())
        return false;
    if (exists(path)) {
        *error = QStringLiteral("the object exists already");
        return false;
    }
    ZopChangeset state;
    state.assignments = values.assignments;
    const QByteArray fresh = path.hidden(".new");
    if (!writeGeneration(fresh, {QRandomGenerator::global()->generate64(), 1}, state, error))
        return false;
    if (rename(fresh.constData(), path.file().constData()) == 0)
        return true;
    *error = systemError(errno);
    return false;
}

/*! Whether there is something at \a path that is no control object. */
static bool isRemovable(const ZopPath &path, QString *error)
{
    struct stat status;
    const bool exists = lstat(path.file().constData(), &status) == 0;
    const bool isControl = exists && S_ISSOCK(status.st_mode);
    if (!exists || isControl)
        *error = isControl ? QStringLiteral("a control object has this path") : QStringLiteral("no such object");
    return exists && !isControl;
}

bool remove(const ZopPath &path, QString *error)
{
    if (!isRemovable(path, error))
        return false;
    const FolderLock folder(path, error); // nobody creates it anew meanwhile
    if (!folder.isHeld() || !isRemovable(path, error))
        return false;
    // An update that is being written gets told before the removal: the lock is that of the present file.
    FileDescriptor file;
    do {
        Header header;
        QString ignored;
        file = openFile(path, O_RDWR, &header, &ignored);
        struct flock lock = lockOn(WritersByte, F_WRLCK);
        while (file.isOpen() && fcntl(file.get(), F_OFD_SETLKW, &lock) != 0 && errno == EINTR) { }
    } while (file.isOpen() && exists(path) && !names(path.file(), file));
    if (unlink(path.file().constData()) != 0) {
        *error = errno == ENOENT ? QStringLiteral("no such object") : systemError(errno);
        return false;
    }
    unlink(path.hidden(".old").constData());
    unlink(path.hidden(".new").constData());
    error->clear();
    return true;
}

bool Reader::open(const ZopPath &path, QString *error)
{
    for (;;) {
        Header header;
        FileDescriptor file = openFile(path, O_RDONLY, &header, error);
        if (!file.isOpen())
            return false;
        struct flock lock = lockOn(ReadersByte, F_RDLCK);
        if (fcntl(file.get(), F_OFD_SETLK, &lock) != 0) {
            *error = systemError(errno);
            return false;
        }
        // Only now is it certain that no generation can be missed: look whether one was.
        if (!names(path.file(), file))
            continue;
        m_path = path;
        m_file = std::move(file); // the old one's lock goes after the new one's was taken
        m_identity = header.identity;
        m_marker = header.marker;
        rewind();
        return true;
    }
}

bool Reader::isCurrent() const
{
    return names(m_path.file(), m_file);
}

qint64 Reader::size() const
{
    struct stat status;
    return fstat(m_file.get(), &status) == 0 ? status.st_size : 0;
}

bool Reader::next(Record *record)
{
    while (!nextOfRead(record)) {
        if (!readOn())
            return false;
    }
    return true;
}

bool Reader::nextOfRead(Record *record)
{
    while (const int size = recordAt(m_position)) {
        RecordHeader header;
        std::memcpy(&header, m_buffer.constData() + m_position, sizeof(header));
        const char *payload = m_buffer.constData() + m_position + sizeof(header);
        m_position += size;
        m_offset += size;
        record->writer = header.writer;
        record->end = m_offset;
        if (decodeChangeset(QByteArray::fromRawData(payload, int(header.size)), &record->changes))
            return true;
        logMalformed(m_path, size);
    }
    return false;
}

bool Reader::readOn()
{
    if (fill() || skip())
        return true;
    drop();
    return false;
}

void Reader::rewind()
{
    m_offset = sizeof(Header);
    drop();
}

/*! The length of the whole and sound record at \a position of the buffer, or 0. */
int Reader::recordAt(int position) const
{
    const int available = m_buffer.size() - position;
    RecordHeader header;
    if (available < int(sizeof(header)))
        return 0;
    std::memcpy(&header, m_buffer.constData() + position, sizeof(header));
    if (header.marker != m_marker || header.size > LargestUpdate || available - int(sizeof(header)) < int(header.size))
        return 0;
    const char *payload = m_buffer.constData() + position + sizeof(header);
    return header.checksum == recordChecksum(header, payload) ? int(sizeof(header) + header.size) : 0;
}

/*! Reads on; false when the buffer has all there is. */
bool Reader::fill()
{
    if (m_atEnd)
        return false;
    m_buffer.remove(0, m_position);
    m_position = 0;
    std::array<char, 64 * 1024> chunk;
    const ssize_t got = pread(m_file.get(), chunk.data(), chunk.size(), m_offset + m_buffer.size());
    m_buffer.append(chunk.data(), int(std::max<ssize_t>(got, 0)));
    m_atEnd = got < ssize_t(chunk.size());
    return got > 0;
}

/*!
 * Steps over what is no record when a record follows: writers come one after another, so that it never will be
 * one. False when nothing follows: somebody may be writing it just now.
 */
bool Reader::skip()
{
    const QByteArray marker(reinterpret_cast<const char *>(&m_marker), sizeof(m_marker));
    int found = m_position;
    do {
        found = m_buffer.indexOf(marker, found + 1);
    } while (found != -1 && !recordAt(found));
    if (found == -1)
        return false;

    if (m_doubted != m_offset) {
        // It may have been half written when it was read and whole by now, like what follows.
        m_doubted = m_offset;
        drop();
        return true;
    }
    logMalformed(m_path, found - m_position);
    m_offset += found - m_position;
    m_position = found;
    return true;
}

void Reader::drop()
{
    m_buffer.clear();
    m_position = 0;
    m_atEnd = false;
}

Writer::Writer()
    : m_number(QRandomGenerator::global()->generate64())
{
}

bool Writer::append(const ZopPath &path, const ZopChangeset &changes, QString *error)
{
    qint64 size = 0;
    if (!lock(path, &size, error))
        return false;
    const QByteArray record = makeRecord(m_marker, m_number, changes);
    const bool fits = record.size() <= LargestUpdate;
    const bool done = fits && writeWhole(m_file.get(), record);
    if (!fits)
        *error = tooLarge();
    else if (!done)
        *error = systemError(errno);
    if (!done && fits && ftruncate(m_file.get(), size) != 0)
        *error += QStringLiteral(", and the file could not be mended");

    if (done && size + record.size() > m_replaceAt && replace(path, size + record.size())) {
        m_file.reset();
        return true;
    }
    struct flock unlocked = lockOn(WritersByte, F_UNLCK);
    fcntl(m_file.get(), F_OFD_SETLK, &unlocked);
    return done;
}

/*! Locks the object's present generation against other writers, and tells its size. */
bool Writer::lock(const ZopPath &path, qint64 *size, QString *error)
{
    for (;;) {
        if (!m_file.isOpen()) {
            Header header;
            m_file = openFile(path, O_RDWR | O_APPEND, &header, error);
            if (!m_file.isOpen())
                return false;
            m_marker = header.marker;
            m_replaceAt = ReplacedAt + 4 * qint64(header.stateEnd);
        }
        struct flock lock = lockOn(WritersByte, F_WRLCK);
        if (fcntl(m_file.get(), F_OFD_SETLKW, &lock) == 0) {
            if (names(path.file(), m_file, size))
                return true;
            m_file.reset(); // replaced or removed while this writer waited
        } else if (errno != EINTR) {
            *error = systemError(errno);
            return false;
        }
    }
}

/*! Puts the next generation, which begins with the present state, into the place of the locked one. */
bool Writer::replace(const ZopPath &path, qint64 size)
{
    // If it fails: not again before the file has grown some more.
    m_replaceAt = size + size / 4;
    if (size < LargestFile && isPreviousRead(path, m_file))
        return false;

    QString error;
    Reader reader;
    if (!reader.open(path, &error))
        return false;
    ZopChangeset state;
    Record record;
    while (reader.next(&record)) {
        for (auto it = record.changes.assignments.cbegin(); it != record.changes.assignments.cend(); ++it)
            state.assignments.insert(it.key(), it.value());
        for (const QString &name : qAsConst(record.changes.removals))
            state.assignments.remove(name);
    }
    const QByteArray file = path.file();
    const QByteArray fresh = path.hidden(".new");
    const QByteArray previous = path.hidden(".old");
    if (!writeGeneration(fresh, {reader.identity().incarnation, reader.identity().generation + 1}, state, &error))
        return false;
    unlink(previous.constData());
    return link(file.constData(), previous.constData()) == 0 && rename(fresh.constData(), file.constData()) == 0;
}

} // namespace Journal
} // namespace morvek
