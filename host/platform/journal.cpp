// SPDX-License-Identifier: Apache-2.0
#include "journal.h"

#include "fileplace.h"
#include "folderlock.h"
#include "hostlog.h"
#include "krellogger.h"
#include "lockwait.h"
#include "zopwire.h"

#include <QtCore/QFile>
#include <QtCore/QRandomGenerator>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>

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

/*! Keeps other writers from the file that is open as \a file. */
bool lockForWriting(const ZopPath &path, const FileDescriptor &file, QString *error)
{
    struct flock lock = lockOn(WritersByte, F_WRLCK);
    return waitForLock(
        path.file(), [&] { return fcntl(file.get(), F_OFD_SETLK, &lock); }, error);
}

bool readHeader(const FileDescriptor &file, Header *header)
{
    return pread(file.get(), header, sizeof(*header), 0) == ssize_t(sizeof(*header))
        && std::memcmp(header->magic, Magic, sizeof(Magic)) == 0 && header->checksum == headerChecksum(*header);
}

QString noSuchObject()
{
    return QStringLiteral("no such object");
}

QString anotherObject()
{
    return QStringLiteral("another object has this path");
}

QString malformed(const ZopPath &path)
{
    return QStringLiteral("malformed content in \"%1\"").arg(QFile::decodeName(path.file()));
}

/*! Whether \a error of an open that follows no links says that there is no file, but something else. */
bool isNoFile(int error)
{
    return error == ELOOP || error == EISDIR || error == ENXIO;
}

FileDescriptor openFile(const ZopPath &path, int flags, Header *header, QString *error)
{
    // Not blocking, as what another program put there may be a pipe.
    FileDescriptor file(open(path.file().constData(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.isOpen() && !isNoFile(errno)) {
        *error = errno == ENOENT ? noSuchObject() : systemError(errno);
    } else if (!file.isOpen() || !readHeader(file, header)) {
        *error = malformed(path);
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
    return isSameFile(there, here);
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

    clearPlace(target);
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
    const FileDescriptor file(open(previous.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.isOpen())
        return errno != ENOENT && !isNoFile(errno); // it cannot be told
    // A writer that was killed between its two steps leaves the current generation under this name.
    if (names(previous, current))
        return false;
    struct flock lock = lockOn(ReadersByte, F_WRLCK);
    return fcntl(file.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

/*! Some bytes of a file at a time. */
class Window
{
public:
    explicit Window(const FileDescriptor &file)
        : m_file(file)
    {
    }

    /*! The \a size bytes at \a offset; null when there are not so many. */
    const char *at(qint64 offset, int size)
    {
        if (offset < m_start || offset + size > m_start + m_bytes.size()) {
            m_bytes.resize(std::max(size, 64 * 1024));
            const ssize_t got = pread(m_file.get(), m_bytes.data(), size_t(m_bytes.size()), offset);
            m_bytes.resize(int(std::max<ssize_t>(got, 0)));
            m_start = offset;
        }
        return offset + size <= m_start + m_bytes.size() ? m_bytes.constData() + (offset - m_start) : nullptr;
    }

private:
    const FileDescriptor &m_file;
    QByteArray m_bytes;
    qint64 m_start = 0;
};

/*! Whether the file consists of sound records only. */
bool isWhole(const FileDescriptor &file, const Header &header)
{
    struct stat status;
    if (fstat(file.get(), &status) != 0)
        return false;
    Window window(file);
    qint64 offset = sizeof(Header);
    bool hasState = false;
    while (offset < status.st_size) {
        RecordHeader record;
        const char *bytes = window.at(offset, sizeof(record));
        if (!bytes)
            return false;
        std::memcpy(&record, bytes, sizeof(record));
        if (record.marker != header.marker || record.size > LargestUpdate)
            return false;
        const char *payload = window.at(offset + qint64(sizeof(record)), int(record.size));
        if (!payload || record.checksum != recordChecksum(record, payload))
            return false;
        offset += qint64(sizeof(record) + record.size);
        hasState = hasState || quint64(offset) == header.stateEnd;
    }
    return hasState;
}

/*! Puts a new object into the place of whatever is there, whose going is seen too. */
bool place(const ZopPath &path, const ZopChangeset &values, QString *error)
{
    ZopChangeset state;
    state.assignments = values.assignments;
    const QByteArray fresh = path.hidden(".new");
    if (!writeGeneration(fresh, {QRandomGenerator::global()->generate64(), 1}, state, error))
        return false;
    if (clearPlace(path.file()) && rename(fresh.constData(), path.file().constData()) == 0)
        return true;
    *error = systemError(errno);
    return false;
}

/*! Locks the present file, if there is one, against writers; whatever is in it, it may be somebody's. */
bool lockPresent(const ZopPath &path, FileDescriptor *file, QString *error)
{
    do {
        file->reset(open(path.file().constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        if (file->isOpen() && !lockForWriting(path, *file, error))
            return false;
    } while (file->isOpen() && exists(path) && !names(path.file(), *file));
    return true;
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
    if (!exists(path))
        return place(path, values, error);
    *error = QStringLiteral("the object exists already");
    return false;
}

bool createAnew(const ZopPath &path, const ZopChangeset &values, QString *error)
{
    const FolderLock folder(path, error);
    FileDescriptor file;
    if (!folder.isHeld() || !lockPresent(path, &file, error))
        return false;
    clearPlace(path.hidden(".old"));
    return place(path, values, error);
}

bool remove(const ZopPath &path, QString *error)
{
    struct stat status;
    if (lstat(path.file().constData(), &status) != 0 || S_ISSOCK(status.st_mode)) {
        *error = exists(path) ? QStringLiteral("a control object has this path") : noSuchObject();
        return false;
    }
    const FolderLock folder(path, error); // nobody creates it anew meanwhile
    FileDescriptor file;                  // an update that is being written gets told before the removal
    if (!folder.isHeld() || !lockPresent(path, &file, error))
        return false;
    if (unlink(path.file().constData()) != 0) {
        *error = errno == ENOENT ? noSuchObject() : systemError(errno);
        return false;
    }
    clearPlace(path.hidden(".old"));
    clearPlace(path.hidden(".new"));
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
        // Whoever keeps the whole file locked keeps it from being replaced, too.
        if (fcntl(file.get(), F_OFD_SETLK, &lock) != 0 && errno != EAGAIN) {
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

bool Check::passes(const ZopPath &path, QString *error)
{
    struct stat present;
    if (lstat(path.file().constData(), &present) != 0) {
        *error = errno == ENOENT ? noSuchObject() : systemError(errno);
        return false;
    }
    if (m_isSettled && isUnchanged(present))
        return true;
    Header header;
    const FileDescriptor file = openFile(path, O_RDWR, &header, error);
    if (!file.isOpen() || fstat(file.get(), &present) != 0)
        return false;
    if (m_identity.incarnation != 0 && !isSuccessor(header.identity, header.marker, present)) {
        *error = anotherObject();
        return false;
    }
    if (!isWhole(file, header)) {
        // It may be in the making, and tells more when its writer is done.
        struct flock lock = lockOn(WritersByte, F_WRLCK);
        if (fcntl(file.get(), F_OFD_SETLK, &lock) != 0 || !names(path.file(), file))
            return true;
        if (!isWhole(file, header)) {
            *error = malformed(path);
            return false;
        }
    }
    m_identity = header.identity;
    m_marker = header.marker;
    m_last = present;
    // What happens to a file within a moment of its last change need not show in its times.
    timespec now;
    m_isSettled = clock_gettime(CLOCK_REALTIME, &now) == 0 && now.tv_sec > present.st_ctim.tv_sec + 1;
    return true;
}

bool Check::isUnchanged(const struct stat &present) const
{
    return isSameFile(present, m_last) && present.st_size == m_last.st_size
        && present.st_ctim.tv_sec == m_last.st_ctim.tv_sec && present.st_ctim.tv_nsec == m_last.st_ctim.tv_nsec;
}

/*! Whether a file can have become of the last one by updates alone. */
bool Check::isSuccessor(Identity identity, quint64 marker, const struct stat &present) const
{
    if (identity.incarnation != m_identity.incarnation)
        return false;
    if (isSameFile(present, m_last))
        return identity.generation == m_identity.generation && marker == m_marker && present.st_size >= m_last.st_size;
    return identity.generation > m_identity.generation;
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

    if (done)
        m_size = size + record.size();
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
            if (m_expected != 0 && header.identity.incarnation != m_expected) {
                m_file.reset();
                *error = anotherObject();
                return false;
            }
            m_marker = header.marker;
            m_size = 0;
            m_replaceAt = ReplacedAt + 4 * qint64(header.stateEnd);
        }
        if (!lockForWriting(path, m_file, error))
            return false;
        if (names(path.file(), m_file, size)) {
            if (*size >= m_size)
                return true;
            // Somebody has cut it: readers are beyond what would be appended.
            m_file.reset();
            *error = malformed(path);
            return false;
        }
        m_file.reset(); // replaced or removed while this writer waited
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
    clearPlace(previous);
    return link(file.constData(), previous.constData()) == 0 && rename(fresh.constData(), file.constData()) == 0;
}

} // namespace Journal
} // namespace morvek
