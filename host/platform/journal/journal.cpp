// SPDX-License-Identifier: Apache-2.0
#include "journal.h"

#include "folderlock.h"
#include "journalstate.h"
#include "zopwire.h"

#include <QtCore/QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>

namespace morvek {
namespace Journal {

namespace {

constexpr mode_t OwnerOnly = S_IRUSR | S_IWUSR;

quint32 recordChecksum(const RecordHeader &header, const char *payload)
{
    return checksum(payload, header.size, checksum(&header.writer, sizeof(header.writer)));
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
    RecordHeader header = {marker, writer, 0, 0};
    QByteArray record(int(sizeof(header)), '\0');
    appendChangeset(changes, &record);
    header.size = quint32(record.size()) - quint32(sizeof(header));
    header.checksum = recordChecksum(header, record.constData() + sizeof(header));
    std::memcpy(record.data(), &header, sizeof(header));
    return record;
}

/*! Writes a complete file with \a state as its first record to \a target. */
bool writeGeneration(const FilePlace &target, Identity identity, const ZopChangeset &state, QString *error)
{
    Header header = {};
    std::memcpy(header.magic, Magic, sizeof(Magic));
    header.marker = std::max<quint64>(QRandomGenerator::global()->generate64(), 1);
    header.identity = identity;
    const QByteArray record = makeRecord(header.marker, 0, state);
    if (record.size() > LargestUpdate) {
        *error = tooLarge();
        return false;
    }
    header.stateEnd = sizeof(header) + quint64(record.size());
    header.checksum = headerChecksum(header);

    target.clear();
    const FileDescriptor file = target.open(O_WRONLY | O_CREAT | O_EXCL, OwnerOnly);
    const auto headerBytes = QByteArray::fromRawData(reinterpret_cast<const char *>(&header), sizeof(header));
    if (file.isOpen() && fchmod(file.get(), OwnerOnly) == 0 && writeWhole(file.get(), headerBytes)
        && writeWhole(file.get(), record))
        return true;
    *error = systemError(errno);
    target.remove();
    return false;
}

/*! Whether somebody still reads the generation before the one that is open as \a current; then it is opened. */
bool isPreviousRead(const ZopPath &path, const FileDescriptor &current, FileDescriptor *previous)
{
    const FilePlace place = path.hidden(".old");
    *previous = place.open(O_RDWR | O_NOFOLLOW | O_NONBLOCK);
    if (!previous->isOpen())
        return errno != ENOENT && !isNoFile(errno); // it cannot be told
    // A writer that was killed between its two steps leaves the current generation under this name.
    if (names(place, current))
        return false;
    struct flock lock = lockOn(ReadersByte, F_WRLCK);
    return fcntl(previous->get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

/*! Nobody will be told what is in \a generation, however long its readers keep it open. */
void empty(const FileDescriptor &generation)
{
    const int failed = ftruncate(generation.get(), 0);
    Q_UNUSED(failed) // then they keep it as it is
}

/*! Puts a new object into the place of whatever is there, whose going is seen too. */
bool place(const ZopPath &path, const ZopChangeset &values, QString *error)
{
    ZopChangeset state;
    state.assignments = values.assignments;
    const FilePlace fresh = path.hidden(".new");
    if (!writeGeneration(fresh, {QRandomGenerator::global()->generate64(), 1}, state, error))
        return false;
    if (path.place().clear() && fresh.rename(path.place()))
        return true;
    *error = systemError(errno);
    return false;
}

/*! Locks the present file, if there is one, against writers; whatever is in it, it may be somebody's. */
bool lockPresent(const ZopPath &path, FileDescriptor *file, QString *error)
{
    do {
        *file = path.place().open(O_RDWR | O_NOFOLLOW | O_NONBLOCK);
        if (file->isOpen() && !lockForWriting(path, *file, error))
            return false;
    } while (file->isOpen() && exists(path) && !names(path.place(), *file));
    return true;
}

/*! Whether there is something at \a path that is no control object. */
bool isRemovable(const ZopPath &path, QString *error)
{
    struct stat status;
    const bool exists = path.place().status(&status);
    const bool isControl = exists && S_ISSOCK(status.st_mode);
    if (!exists)
        *error = errno == ENOENT || errno == ENOTDIR ? noSuchObject() : systemError(errno);
    else if (isControl)
        *error = QStringLiteral("a control object has this path");
    return exists && !isControl;
}

} // namespace

bool exists(const ZopPath &path)
{
    struct stat status;
    return path.place().status(&status);
}

bool isGone(const ZopPath &path)
{
    struct stat status;
    return !path.place().status(&status) && (errno == ENOENT || errno == ENOTDIR);
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
    path.hidden(".old").clear();
    return place(path, values, error);
}

bool remove(const ZopPath &path, QString *error)
{
    path.lookAgain();
    if (!isRemovable(path, error))
        return false;
    const FolderLock folder(path, error); // nobody creates it anew meanwhile
    FileDescriptor file;                  // an update that is being written gets told before the removal
    if (!folder.isHeld() || !isRemovable(path, error) || !lockPresent(path, &file, error))
        return false;
    if (!path.place().remove()) {
        *error = errno == ENOENT ? noSuchObject() : systemError(errno);
        return false;
    }
    path.hidden(".old").clear();
    path.hidden(".new").clear();
    error->clear();
    return true;
}

Writer::Writer()
    : m_number(QRandomGenerator::global()->generate64())
{
}

Writer::~Writer() = default;

bool Writer::append(const ZopPath &path, const ZopChangeset &changes, QString *error)
{
    qint64 size = 0;
    if (!lock(path, &size, error))
        return false;
    const QByteArray record = makeRecord(m_header.marker, m_number, changes);
    const qint64 end = size + record.size();
    const bool done = fits(path, changes, record.size(), end, error) && write(record, size, error);
    if (done)
        m_size = end;
    m_hasReplaced = done && end > m_replaceAt && replace(path);
    if (m_hasReplaced) {
        QString ignored; // the next update tells what hinders it
        open(path, &ignored);
        return true;
    }
    if (end <= MostBehind)
        m_state.reset();
    unlock();
    return done;
}

bool Writer::hasLost(const ZopPath &path) const
{
    qint64 size = 0;
    return m_file.isOpen() && names(path.place(), m_file, &size) && size < m_size;
}

bool Writer::renew(const ZopPath &path, QString *error)
{
    qint64 size = 0;
    if (!lock(path, &size, error))
        return false;
    const bool done = replace(path, 2);
    m_state.reset();
    if (done)
        m_file.reset();
    else
        unlock();
    return done;
}

void Writer::unlock()
{
    struct flock unlocked = lockOn(WritersByte, F_UNLCK);
    fcntl(m_file.get(), F_OFD_SETLK, &unlocked);
}

/*! Opens the present generation of the object, which has to be the one that is expected. */
bool Writer::open(const ZopPath &path, QString *error)
{
    m_state.reset();
    m_file = openFile(path, O_RDWR | O_APPEND, &m_header, error);
    if (!m_file.isOpen())
        return false;
    const bool isExpected = m_expected == 0 || m_header.identity.incarnation == m_expected;
    if (!isExpected || fstat(m_file.get(), &m_place) != 0) {
        *error = isExpected ? systemError(errno) : anotherObject();
        m_file.reset();
        return false;
    }
    m_size = 0;
    m_replaceAt = ReplacedAt + 4 * qint64(m_header.stateEnd);
    return true;
}

/*! Locks the object's present generation against other writers, and tells its size. */
bool Writer::lock(const ZopPath &path, qint64 *size, QString *error)
{
    for (;;) {
        if ((!m_file.isOpen() && !open(path, error)) || !lockForWriting(path, m_file, error))
            return false;
        if (names(path.place(), m_place, size)) {
            if (isSound(path, *size, error))
                return true;
            m_state.reset();
            m_file.reset();
            return false;
        }
        m_file.reset(); // replaced or removed while this writer waited
    }
}

/*! Whether the file has what was there when this writer wrote last, as far as one look can tell. */
bool Writer::isSound(const ZopPath &path, qint64 size, QString *error) const
{
    Header header;
    const bool isRead = pread(m_file.get(), &header, sizeof(header), 0) == ssize_t(sizeof(header));
    if (size < m_size || !isRead)
        *error = cutOff(path);
    else if (std::memcmp(&header, &m_header, sizeof(header)) != 0)
        *error = malformed(path, QStringLiteral("the header is another one"));
    else
        return true;
    return false;
}

/*!
 * Whether a file that ends with \a changes at \a end can be replaced some day, and by whoever replaces it: its state
 * has to fit into one record. What is in a small file does.
 */
bool Writer::fits(const ZopPath &path, const ZopChangeset &changes, int recordSize, qint64 end, QString *error)
{
    if (recordSize > LargestUpdate) {
        *error = tooLarge();
        return false;
    }
    if (end <= LargestUpdate)
        return true;
    if (!foldState(path, error))
        return false;
    if (m_state->sizeAfter(changes) <= LargestUpdate)
        return true;
    *error = QStringLiteral("with this update the object's state would be too large");
    return false;
}

/*! Appends \a record to the file, which has \a size, or nothing at all. */
bool Writer::write(const QByteArray &record, qint64 size, QString *error)
{
    if (writeWhole(m_file.get(), record))
        return true;
    *error = systemError(errno);
    if (ftruncate(m_file.get(), size) != 0)
        *error += QStringLiteral(", and the file could not be mended");
    return false;
}

/*! Brings m_state up to what the locked file holds. */
bool Writer::foldState(const ZopPath &path, QString *error)
{
    if (!m_state) {
        // No reader's lock, which would keep the next generation from being replaced.
        FileDescriptor file(fcntl(m_file.get(), F_DUPFD_CLOEXEC, 0));
        if (!file.isOpen()) {
            *error = systemError(errno);
            return false;
        }
        m_state = std::make_unique<FoldedState>(path, std::move(file), m_header);
    }
    if (m_state->follow())
        return true;
    *error = tooMuchNonsense(path);
    return false;
}

/*! Whether readers of the previous generation are further behind than they may be. */
bool Writer::mayLeaveBehind(const ZopPath &path)
{
    QString error;
    const qint64 size = sizeOf(m_file.get());
    return size > MostBehind && foldState(path, &error) && size > MostBehind + 4 * m_state->size();
}

/*! Puts the next generation, which begins with the present state, into the place of the locked one. */
bool Writer::replace(const ZopPath &path, quint64 generations)
{
    FileDescriptor previous; // if it is read
    const bool isRead = isPreviousRead(path, m_file, &previous);
    if (isRead && !mayLeaveBehind(path))
        return false;
    QString error;
    const FilePlace fresh = path.hidden(".new");
    const FilePlace old = path.hidden(".old");
    ZopChangeset state;
    const Identity next = {m_header.identity.incarnation, m_header.identity.generation + generations};
    bool done = foldState(path, &error);
    if (done) {
        state.assignments = m_state->values();
        done = writeGeneration(fresh, next, state, &error);
    }
    if (done) {
        old.clear();
        done = path.place().link(old) && fresh.rename(path.place());
    }
    if (!done)
        m_replaceAt = sizeOf(m_file.get()) * 5 / 4; // not again before the file has grown some more
    else if (isRead)
        empty(previous);
    return done;
}

} // namespace Journal
} // namespace morvek
