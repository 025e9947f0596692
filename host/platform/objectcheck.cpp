// SPDX-License-Identifier: Apache-2.0
#include "objectcheck.h"

#include "fileplace.h"
#include "journalreader.h"

#include <cerrno>
#include <ctime>

namespace morvek {

using namespace Journal;

namespace {

/*! Whether the file consists of sound records only. */
bool isWhole(const ZopPath &path, const FileDescriptor &file, const Header &header)
{
    FileDescriptor own(fcntl(file.get(), F_DUPFD_CLOEXEC, 0));
    if (!own.isOpen())
        return true; // it cannot be told
    bool isSound = true;
    Reader reader;
    reader.setReport([&isSound](qint64, qint64) { isSound = false; });
    reader.adopt(path, std::move(own), header);
    bool hasState = false;
    Record record;
    while (isSound && reader.next(&record))
        hasState = hasState || quint64(record.end) == header.stateEnd;
    return isSound && hasState && !reader.isMalformed() && reader.offset() == reader.size();
}

} // namespace

bool ObjectCheck::passes(const ZopPath &path, QString *error)
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
    if (m_identity.incarnation != 0 && !isSuccessor(header, present)) {
        *error = anotherObject();
        return false;
    }
    if (!isWhole(path, file, header)) {
        // It may be in the making, and tells more when its writer is done.
        struct flock lock = lockOn(WritersByte, F_WRLCK);
        if (fcntl(file.get(), F_OFD_SETLK, &lock) != 0 || !names(path.file(), file))
            return true;
        if (!isWhole(path, file, header)) {
            *error = malformed(path, QStringLiteral("not all of it are records"));
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

bool ObjectCheck::isUnchanged(const struct stat &present) const
{
    return isSameFile(present, m_last) && present.st_size == m_last.st_size
        && present.st_ctim.tv_sec == m_last.st_ctim.tv_sec && present.st_ctim.tv_nsec == m_last.st_ctim.tv_nsec;
}

/*! Whether a file can have become of the last one by updates alone. */
bool ObjectCheck::isSuccessor(const Header &header, const struct stat &present) const
{
    if (header.identity.incarnation != m_identity.incarnation)
        return false;
    if (isSameFile(present, m_last))
        return header.identity.generation == m_identity.generation && header.marker == m_marker
            && present.st_size >= m_last.st_size;
    return header.identity.generation > m_identity.generation;
}

} // namespace morvek
