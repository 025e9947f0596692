// SPDX-License-Identifier: Apache-2.0
#include "journalreader.h"

#include "hostlog.h"
#include "zopwire.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace morvek {
namespace Journal {

namespace {

constexpr int HeaderSize = sizeof(RecordHeader);
// Only where much that pretends to be records lies between holes does reading cost more than the bytes are worth.
constexpr qint64 WorkPerByte = 64;

/*! Whoever keeps the whole file locked keeps it from being replaced, too. */
bool setLock(const FileDescriptor &file, short type)
{
    struct flock lock = lockOn(ReadersByte, type);
    return fcntl(file.get(), F_OFD_SETLK, &lock) == 0 || errno == EAGAIN;
}

} // namespace

bool Reader::open(const ZopPath &path, QString *error)
{
    for (;;) {
        Header header;
        FileDescriptor file = openFile(path, O_RDONLY, &header, error);
        if (!file.isOpen())
            return false;
        if (!setLock(file, F_RDLCK)) {
            *error = systemError(errno);
            return false;
        }
        // Only now is it certain that no generation can be missed: look whether one was.
        struct stat opened;
        if (fstat(file.get(), &opened) != 0 || !names(path.place(), opened))
            continue;
        adopt(path, std::move(file), header); // the old one's lock goes after the new one's was taken
        m_opened = opened;
        return true;
    }
}

bool Reader::lock()
{
    return setLock(m_file, F_RDLCK);
}

void Reader::unlock()
{
    setLock(m_file, F_UNLCK);
}

void Reader::adopt(const ZopPath &path, FileDescriptor file, const Header &header, qint64 from)
{
    m_path = path;
    m_file = std::move(file);
    m_header = header;
    rewind();
    m_offset = from;
}

bool Reader::isBeingWritten() const
{
    struct flock lock = lockOn(WritersByte, F_WRLCK);
    return fcntl(m_file.get(), F_OFD_GETLK, &lock) != 0 || lock.l_type != F_UNLCK;
}

bool Reader::next(Record *record)
{
    while (!nextOfRead(record)) {
        if (!readOn())
            return false;
        if (m_work > WorkPerByte * (LargestNonsense + m_told))
            giveUp();
    }
    return true;
}

bool Reader::nextOfRead(Record *record)
{
    while (mayTrust() && look() == Sound) {
        RecordHeader header;
        std::memcpy(&header, m_buffer.constData() + m_position, sizeof(header));
        const char *payload = m_buffer.constData() + m_position + HeaderSize;
        const qint64 size = HeaderSize + qint64(header.size);
        if (!decodeChangeset(payload, int(header.size), &record->changes)) {
            m_nonsense += size;
            skipTo(m_offset + size, size);
            continue;
        }
        report();
        skipTo(m_offset + size, 0);
        m_told += size;
        record->writer = header.writer;
        record->end = m_offset;
        return true;
    }
    return false;
}

bool Reader::readOn()
{
    if (m_isMalformed)
        return false;
    if (!mayTrust())
        return search();
    if (m_foundAt != m_offset)
        m_search.reset(); // what it knows lies behind
    const State state = look();
    if (state == Sound || (state == Short && fill()))
        return true;
    if (m_foundAt == m_offset) {
        // Somebody has written over it, or cut it off, since it was found.
        m_foundAt = -1;
        m_search.reset();
        drop();
        return true;
    }
    if (m_position < m_buffer.size())
        return search();
    report();
    drop();
    return false;
}

void Reader::rewind()
{
    m_offset = sizeof(Header);
    m_work = 0;
    m_told = 0;
    m_skipped = 0;
    m_nonsense = 0;
    m_isMalformed = false;
    m_search.reset();
    m_again.reset();
    m_foundAt = -1;
    drop();
}

/*!
 * Whether what stands at the present offset is worth to be summed. Where the search has been it may be not: any number
 * of records may claim the same bytes.
 */
bool Reader::mayTrust() const
{
    return m_offset == m_foundAt || !(m_search && m_search->hasSeen(m_offset));
}

/*! What the buffer has at the present offset. */
Reader::State Reader::look()
{
    const int available = m_buffer.size() - m_position - HeaderSize;
    if (available < 0)
        return Short;
    RecordHeader header;
    std::memcpy(&header, m_buffer.constData() + m_position, sizeof(header));
    if (header.marker != m_header.marker || header.size > LargestUpdate)
        return Wrong;
    if (m_summed == 0)
        m_sum = checksum(&header.writer, sizeof(header.writer));
    const int whole = int(header.size);
    const int size = std::min(available, whole) - m_summed;
    m_sum = checksum(m_buffer.constData() + m_position + HeaderSize + m_summed, size_t(size), m_sum);
    m_summed += size;
    m_work += size;
    if (m_summed < whole)
        return Short;
    return m_sum == header.checksum ? Sound : Wrong;
}

/*! Reads on; false when the buffer has all there is, or the file has not the whole record. */
bool Reader::fill()
{
    if (m_isAtEnd)
        return false;
    m_buffer = m_buffer.mid(m_position);
    m_position = 0;
    if (m_buffer.size() >= HeaderSize) {
        RecordHeader header;
        std::memcpy(&header, m_buffer.constData(), sizeof(header));
        const int whole = HeaderSize + int(header.size);
        if (size() - m_offset < whole)
            return false;
        m_buffer.reserve(whole + ChunkSize);
    }
    std::array<char, ChunkSize> chunk;
    const ssize_t got = pread(m_file.get(), chunk.data(), chunk.size(), m_offset + m_buffer.size());
    m_buffer.append(chunk.data(), int(std::max<ssize_t>(got, 0)));
    m_work += std::max<ssize_t>(got, 0);
    m_isAtEnd = got < ssize_t(chunk.size());
    return got > 0;
}

/*!
 * Steps over what is no record when a record follows: writers come one after another, so that it never will be
 * one. False when nothing follows: somebody may be writing it just now.
 */
bool Reader::search()
{
    if (m_again)
        return checkAgain();
    if (!m_search)
        m_search.emplace(m_file.get(), m_header.marker, m_offset);
    m_search->goOn(m_offset);
    const RecordSearch::Result result = m_search->run(&m_work);
    if (m_skipped + m_search->passed() > LargestNonsense) {
        giveUp();
        return false;
    }
    if (result == RecordSearch::AtEnd) {
        report();
        drop();
        return false;
    }
    if (result == RecordSearch::Found) {
        m_foundAt = m_search->position();
        if (m_foundAt > m_offset)
            m_again.emplace(m_file.get(), m_header.marker, m_offset, m_foundAt);
        else if (look() != Sound)
            drop();
    }
    return true;
}

/*! What is to be stepped over may have been half written when it was read, and whole by now, like what follows. */
bool Reader::checkAgain()
{
    const RecordSearch::Result result = m_again->run(&m_work);
    if (result == RecordSearch::Unfinished)
        return true;
    if (result == RecordSearch::Found) {
        m_search.reset();
        m_foundAt = m_again->position();
        drop();
    }
    const qint64 passed = result == RecordSearch::Found ? m_again->passed() : m_search->passed();
    m_again.reset();
    m_nonsense += m_foundAt - m_offset;
    skipTo(m_foundAt, passed);
    return true;
}

/*! Goes on behind a record, or behind what is none, \a nonsense bytes of it. */
void Reader::skipTo(qint64 offset, qint64 nonsense)
{
    const qint64 step = offset - m_offset;
    if (step > m_buffer.size() - m_position)
        drop();
    else
        m_position += int(step);
    m_summed = 0;
    m_offset = offset;
    m_skipped += nonsense;
    if (m_skipped > LargestNonsense)
        giveUp();
}

/*! Tells what was stepped over. */
void Reader::report()
{
    if (m_nonsense == 0)
        return;
    if (m_report)
        m_report(m_offset - m_nonsense, m_nonsense);
    else
        logMalformed(m_path, m_nonsense);
    m_nonsense = 0;
}

/*! Reads no further. */
void Reader::giveUp()
{
    report();
    m_isMalformed = true;
    m_search.reset();
    m_again.reset();
    drop();
    if (!m_report)
        logError(tooMuchNonsense(m_path));
}

void Reader::drop()
{
    m_buffer = QByteArray();
    m_position = 0;
    m_summed = 0;
    m_isAtEnd = false;
}

} // namespace Journal
} // namespace morvek
