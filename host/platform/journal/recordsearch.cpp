// SPDX-License-Identifier: Apache-2.0
#include "recordsearch.h"

#include "zopwire.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <unistd.h>
#include <zlib.h>

namespace morvek {
namespace Journal {

namespace {

constexpr qint64 WorkPerPiece = 2 * ChunkSize;
// What a claim costs besides the sums, in bytes that could be summed meanwhile.
constexpr qint64 WorkPerClaim = 1024;
constexpr qint64 WorkPerMarker = 64;
constexpr qint64 BlockSize = 256;
// A writer that works on a record is the last one; those before were killed.
constexpr size_t MostWaiting = 1024;

constexpr qint64 HeaderSize = sizeof(RecordHeader);
constexpr qint64 MarkerRest = sizeof(RecordHeader::marker) - 1;

/*! The checksum of what follows a beginning with the checksum \a first in a whole with \a both. */
quint32 sumOfRest(quint32 first, quint32 both, uLong lengthOfRest)
{
    return quint32(crc32_combine_op(first, both, lengthOfRest));
}

quint32 sumOfBoth(quint32 first, quint32 rest, uLong lengthOfRest)
{
    return quint32(crc32_combine_op(first, rest, lengthOfRest));
}

} // namespace

RecordSearch::RecordSearch(int file, quint64 marker, qint64 from, qint64 limit)
    : m_file(file),
      m_marker(marker),
      m_from(from),
      m_limit(limit),
      m_at(from)
{
}

void RecordSearch::goOn(qint64 from)
{
    if (from <= m_at)
        return;
    m_from = from;
    m_at = from;
    m_passed = 0;
    while (!m_waiting.empty() && m_waiting.front().at < from)
        m_waiting.pop_front();
}

RecordSearch::Result RecordSearch::run(qint64 *work)
{
    if (hasChanged())
        *this = RecordSearch(m_file, m_marker, m_from, m_limit);
    m_enough = *work + WorkPerPiece;
    m_end = std::min(m_limit, sizeOf(m_file));
    if (const Result result = judgeWaiting(work); result != AtEnd)
        return result;
    while (*work < m_enough) {
        Claim claim;
        if (!findClaim(&claim, work)) {
            if (m_end - m_at >= HeaderSize)
                continue;
            wait();
            return AtEnd;
        }
        switch (judge(claim, work)) {
        case Sound:
            return Found;
        case Undecided:
            return Unfinished;
        case NotWhole:
            m_waiting.push_back(claim);
            if (m_waiting.size() > MostWaiting)
                m_waiting.pop_front();
            break;
        case Unsound:
            break;
        }
        pass(m_at + 1);
    }
    return Unfinished;
}

/*!
 * Whether something was cut off since the last look, as by a writer that found no room for the rest, and perhaps
 * something else was written in its place.
 */
bool RecordSearch::hasChanged() const
{
    if (sizeOf(m_file) < m_end)
        return true;
    if (m_waiting.empty())
        return false;
    RecordHeader header;
    const Claim &last = m_waiting.back();
    return pread(m_file, &header, sizeof(header), last.at) != HeaderSize
        || std::memcmp(&header, &last.header, sizeof(header)) != 0;
}

/*! Looks again at what may be whole by now; AtEnd when nothing is. */
RecordSearch::Result RecordSearch::judgeWaiting(qint64 *work)
{
    for (auto it = m_waiting.begin(); it != m_waiting.end();) {
        switch (judge(*it, work)) {
        case Sound:
            m_at = it->at;
            m_waiting.erase(it, m_waiting.end());
            return Found;
        case Undecided:
            return Unfinished;
        case Unsound:
            it = m_waiting.erase(it);
            break;
        case NotWhole:
            ++it;
            break;
        }
    }
    return AtEnd;
}

/*! Goes on to what may begin a record; false when it is not in the chunk that was read. */
bool RecordSearch::findClaim(Claim *claim, qint64 *work)
{
    const qint64 chunkEnd = m_chunkAt + m_chunk.size();
    if (m_at < m_chunkAt || m_at + HeaderSize > chunkEnd) {
        readChunk(work);
        return false;
    }
    *work += WorkPerMarker;
    const char *from = m_chunk.constData() + (m_at - m_chunkAt);
    const void *found = memmem(from, size_t(chunkEnd - m_at), &m_marker, sizeof(m_marker));
    if (!found) {
        pass(chunkEnd - MarkerRest);
        return false;
    }
    pass(m_at + (static_cast<const char *>(found) - from));
    if (m_at + HeaderSize > chunkEnd)
        return false;
    claim->at = m_at;
    std::memcpy(&claim->header, found, sizeof(claim->header));
    if (claim->header.size <= LargestUpdate)
        return true;
    pass(m_at + 1);
    return false;
}

/*! Reads on, behind a hole if there is one: no marker begins in zeros that are not its own. */
void RecordSearch::readChunk(qint64 *work)
{
    m_chunk.clear();
    qint64 data = lseek(m_file, m_at, SEEK_DATA);
    if (data == -1)
        data = errno == ENXIO ? m_end : m_at;
    m_at = std::max(m_at, std::min(data, m_end) - MarkerRest);
    if (m_end - m_at < HeaderSize)
        return;
    m_chunkAt = m_at;
    m_chunk.resize(int(std::min<qint64>(ChunkSize, m_end - m_at)));
    const ssize_t got = pread(m_file, m_chunk.data(), size_t(m_chunk.size()), m_at);
    m_chunk.truncate(int(std::max<ssize_t>(got, 0)));
    *work += m_chunk.size();
    if (got < HeaderSize)
        m_end = m_at;
}

void RecordSearch::pass(qint64 to)
{
    m_passed += to - m_at;
    m_at = to;
}

RecordSearch::Verdict RecordSearch::judge(const Claim &claim, qint64 *work)
{
    if (claim.end() > m_end)
        return NotWhole;
    const qint64 payload = claim.at + HeaderSize;
    if (!sum(payload, claim.end(), work))
        return Undecided;
    *work += WorkPerClaim;
    const uLong length = crc32_combine_gen(claim.header.size);
    const quint32 sumOfPayload = sumOfRest(sumBefore(payload), sumBefore(claim.end()), length);
    const quint32 sumOfWriter = checksum(&claim.header.writer, sizeof(claim.header.writer));
    return sumOfBoth(sumOfWriter, sumOfPayload, length) == claim.header.checksum ? Sound : Unsound;
}

/*! Sees to the sums between the two offsets; false when that takes more than a piece. */
bool RecordSearch::sum(qint64 from, qint64 to, qint64 *work)
{
    if (m_sums.empty() || from < m_summedFrom || from >= summedEnd() + BlockSize) {
        m_sums = {0};
        m_summedFrom = from;
    }
    const qint64 needed = m_waiting.empty() ? from : std::min(from, m_waiting.front().at);
    for (; m_sums.size() > 1 && m_summedFrom + BlockSize <= needed; m_summedFrom += BlockSize)
        m_sums.pop_front();

    std::array<char, ChunkSize> bytes;
    while (to - summedEnd() >= BlockSize) {
        if (*work >= m_enough)
            return false;
        const qint64 most = std::min<qint64>(ChunkSize, m_end - summedEnd());
        const ssize_t got = pread(m_file, bytes.data(), size_t(most), summedEnd());
        if (got < BlockSize)
            break; // somebody has cut the file just now
        *work += got;
        for (ssize_t at = 0; at + BlockSize <= got; at += BlockSize)
            m_sums.push_back(checksum(bytes.data() + at, BlockSize, m_sums.back()));
    }
    return true;
}

/*! The checksum of the bytes before \a offset, from wherever the sums begin. */
quint32 RecordSearch::sumBefore(qint64 offset) const
{
    const auto block = std::min(size_t((offset - m_summedFrom) / BlockSize), m_sums.size() - 1);
    const qint64 at = m_summedFrom + qint64(block) * BlockSize;
    std::array<char, BlockSize> bytes;
    const auto rest = size_t(std::min(offset - at, BlockSize));
    const ssize_t got = pread(m_file, bytes.data(), rest, at);
    return checksum(bytes.data(), size_t(std::max<ssize_t>(got, 0)), m_sums[block]);
}

qint64 RecordSearch::summedEnd() const
{
    return m_sums.empty() ? 0 : m_summedFrom + qint64(m_sums.size() - 1) * BlockSize;
}

/*! What was read last may be cut off again before anything follows it. */
void RecordSearch::wait()
{
    m_chunk.clear();
    while (m_sums.size() > 1 && summedEnd() > m_at)
        m_sums.pop_back();
    if (m_summedFrom > m_at)
        m_sums.clear();
}

} // namespace Journal
} // namespace morvek
