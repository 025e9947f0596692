// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_RECORDSEARCH_H
#define MORVEK_RECORDSEARCH_H

#include "journalfile.h"

#include <deque>

namespace morvek {
namespace Journal {

/*!
 * Looks for the first sound record behind what is none.
 *
 * Anything may look like the beginning of a record, and claim any length. So that the work is that of the bytes,
 * however many such claims overlap, the bytes are summed once: the checksum of any stretch follows from those of the
 * bytes up to its beginning and up to its end.
 */
class RecordSearch
{
public:
    enum Result {
        Found,
        AtEnd,     //!< nothing; there may be something when the file has grown
        Unfinished //!< enough for now
    };

    /*! Looks at what is in \a file from the offset \a from on, and ends before \a limit. */
    RecordSearch(int file, quint64 marker, qint64 from, qint64 limit = std::numeric_limits<qint64>::max());

    /*! A piece of the work, of which the amount is added to \a work. */
    Result run(qint64 *work);
    /*! Where the search has come to; what is found begins there. */
    qint64 position() const { return m_at; }
    /*! How many bytes it has passed since it was told where to begin; holes do not count. */
    qint64 passed() const { return m_passed; }

    /*! Whether what is at \a offset has been read or summed, so that the search had best go on from there. */
    bool hasSeen(qint64 offset) const
    {
        return offset <= m_at || offset < summedEnd() || offset < m_chunkAt + m_chunk.size();
    }
    void goOn(qint64 from);

private:
    enum Verdict { Sound, Unsound, NotWhole, Undecided };

    struct Claim
    {
        qint64 at;
        RecordHeader header;
        qint64 end() const { return at + qint64(sizeof(header)) + header.size; }
    };

    bool hasChanged() const;
    Result judgeWaiting(qint64 *work);
    bool findClaim(Claim *claim, qint64 *work);
    void readChunk(qint64 *work);
    void pass(qint64 to);
    Verdict judge(const Claim &claim, qint64 *work);
    bool sum(qint64 from, qint64 to, qint64 *work);
    quint32 sumBefore(qint64 offset) const;
    qint64 summedEnd() const;
    void wait();

    int m_file;
    quint64 m_marker;
    qint64 m_from;
    qint64 m_limit;
    qint64 m_end = 0; // of the file, or the limit
    qint64 m_at;
    qint64 m_passed = 0;
    qint64 m_enough = 0; // when this piece of the work is done

    QByteArray m_chunk;
    qint64 m_chunkAt = 0;

    // The checksums of the bytes from m_summedFrom on, up to each full block.
    std::deque<quint32> m_sums;
    qint64 m_summedFrom = 0;

    // What would be records if the file were longer, in their order.
    std::deque<Claim> m_waiting;
};

} // namespace Journal
} // namespace morvek

#endif
