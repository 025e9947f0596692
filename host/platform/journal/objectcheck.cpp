// SPDX-License-Identifier: Apache-2.0
#include "objectcheck.h"

#include "fileplace.h"
#include "journalreader.h"
#include "zopwire.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>

namespace morvek {

using namespace Journal;

namespace {

/*! Adds the bytes between the two offsets to \a sum; false when they cannot be read. */
bool addToSum(const FileDescriptor &file, qint64 from, qint64 to, quint32 *sum)
{
    std::array<char, ChunkSize> bytes;
    while (from < to) {
        const ssize_t got = pread(file.get(), bytes.data(), size_t(std::min<qint64>(ChunkSize, to - from)), from);
        if (got <= 0)
            return false;
        *sum = checksum(bytes.data(), size_t(got), *sum);
        from += got;
    }
    return true;
}

/*!
 * Whether the bytes may be what writers, but not \a writer, left when they were killed: beginnings of records. A record
 * that is damaged is whole, and may have held what \a writer has told.
 */
bool areTorn(const FileDescriptor &file, qint64 offset, qint64 size, quint64 marker, quint64 writer)
{
    if (size > LargestUpdate)
        return false;
    QByteArray bytes(int(size), '\0');
    if (pread(file.get(), bytes.data(), size_t(size), offset) != size)
        return false;
    const auto mark = QByteArray::fromRawData(reinterpret_cast<const char *>(&marker), sizeof(marker));
    for (int at = 0; at < bytes.size();) {
        RecordHeader header;
        if (bytes.size() - at < int(sizeof(header)))
            return false;
        std::memcpy(&header, bytes.constData() + at, sizeof(header));
        const int next = bytes.indexOf(mark, at + int(sizeof(header)));
        const int end = next == -1 ? bytes.size() : next;
        if (header.marker != marker || header.writer == writer || header.size > LargestUpdate
            || at + qint64(sizeof(header)) + header.size <= end)
            return false;
        at = end;
    }
    return true;
}

} // namespace

ObjectCheck::Result ObjectCheck::judge(const ZopPath &path, quint64 writer, QString *error)
{
    struct stat present;
    if (!path.place().status(&present)) {
        *error = errno == ENOENT ? noSuchObject() : systemError(errno);
        return Unsound;
    }
    Header header;
    const FileDescriptor file = openFile(path, O_RDWR, &header, error);
    if (!file.isOpen() || fstat(file.get(), &present) != 0)
        return Unsound;
    if (m_identity.incarnation != 0 && !isSuccessor(header, present)) {
        *error = anotherObject();
        return Unsound;
    }
    Progress progress = isSameFile(present, m_last) ? m_progress : Progress();
    if (judgeContent(path, file, header, writer, &progress) != Sound) {
        // It may be in the making, and tells more when its writer is done.
        struct flock lock = lockOn(WritersByte, F_WRLCK);
        if (fcntl(file.get(), F_OFD_SETLK, &lock) != 0 || !names(path.place(), file))
            return Sound;
        const Result result = judgeContent(path, file, header, writer, &progress);
        if (result == Unsound)
            *error = malformed(path, QStringLiteral("not all of it are records"));
        if (result != Sound)
            return result;
    }
    m_identity = header.identity;
    m_marker = header.marker;
    m_last = present;
    m_progress = progress;
    // What happens to a file within a moment of its last change need not show in its times.
    timespec now;
    m_isSettled = clock_gettime(CLOCK_REALTIME, &now) == 0 && now.tv_sec > present.st_ctim.tv_sec + 1;
    return Sound;
}

bool ObjectCheck::isUnchanged(const ZopPath &path) const
{
    struct stat present;
    return m_isSettled && path.place().status(&present) && isSameFile(present, m_last)
        && present.st_size == m_last.st_size && present.st_ctim.tv_sec == m_last.st_ctim.tv_sec
        && present.st_ctim.tv_nsec == m_last.st_ctim.tv_nsec;
}

/*! Whether a file can have become of the last one by updates alone. */
bool ObjectCheck::isSuccessor(const Header &header, const struct stat &present) const
{
    if (header.identity.incarnation != m_identity.incarnation)
        return false;
    if (isSameFile(present, m_last))
        return header.identity.generation == m_identity.generation && header.marker == m_marker;
    return header.identity.generation > m_identity.generation;
}

/*! Whether what was judged is still the same, and the rest are sound records, or at least beginnings of such. */
ObjectCheck::Result ObjectCheck::judgeContent(const ZopPath &path, const FileDescriptor &file, const Header &header,
                                              quint64 writer, Progress *progress)
{
    FileDescriptor own(fcntl(file.get(), F_DUPFD_CLOEXEC, 0));
    if (!own.isOpen())
        return Sound; // it cannot be told
    Progress now;
    if (!addToSum(file, 0, progress->end, &now.sum) || now.sum != progress->sum)
        return Unsound;
    Result result = Sound;
    const auto stepOver = [&](qint64 offset, qint64 size) {
        if (result != Unsound)
            result = areTorn(file, offset, size, header.marker, writer) ? Torn : Unsound;
    };
    Reader reader;
    reader.setReport(stepOver);
    reader.adopt(path, std::move(own), header, std::max<qint64>(progress->end, sizeof(header)));
    bool hasState = progress->end != 0;
    Record record;
    while (result != Unsound && reader.next(&record))
        hasState = hasState || quint64(record.end) == header.stateEnd;
    now.end = reader.offset();
    if (reader.size() > now.end)
        stepOver(now.end, reader.size() - now.end);
    if (!hasState || reader.isMalformed() || !addToSum(file, progress->end, now.end, &now.sum))
        return Unsound;
    if (result == Sound)
        *progress = now;
    return result;
}

} // namespace morvek
