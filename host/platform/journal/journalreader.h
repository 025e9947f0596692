// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_JOURNALREADER_H
#define MORVEK_JOURNALREADER_H

#include "recordsearch.h"
#include "zopchangeset.h"
#include "zoppath.h"

#include <functional>
#include <optional>

#include <sys/stat.h>

namespace morvek {
namespace Journal {

struct Record
{
    quint64 writer = 0;
    qint64 end = 0; //!< offset behind the record
    ZopChangeset changes;

    /*! Whether this is the first record of an object that was created without values. */
    bool isEmptyState() const { return writer == 0 && changes.assignments.isEmpty(); }
};

class Reader
{
public:
    /*! Is told what is no record, and stepped over. */
    using Report = std::function<void(qint64 offset, qint64 size)>;

    /*! False with errno, which is EBADMSG when the content is malformed; what was open stays so. */
    bool open(const ZopPath &path, QString *error);
    /*! The same for a file that is open: its owner sees to it that it is not replaced. Begins at the offset \a from. */
    void adopt(const ZopPath &path, FileDescriptor file, const Header &header, qint64 from = sizeof(Header));
    void close() { m_file.reset(); }
    /*! While it is unlocked, it may miss generations. False with errno. */
    bool lock();
    void unlock();
    bool isOpen() const { return m_file.isOpen(); }
    Identity identity() const { return m_header.identity; }
    const Header &header() const { return m_header; }
    /*! Without it, the log is told. */
    void setReport(const Report &report) { m_report = report; }

    /*! Whether the object's path names this very file: if not, it is complete. */
    bool isCurrent() const { return names(m_path.place(), m_opened); }
    /*! What is behind this offset now was not there when this was called. */
    qint64 size() const { return sizeOf(m_file.get()); }
    /*! Whether this reader was left behind: there may be less to read than there was. */
    bool isEmptied() const { return size() == 0; }
    /*! How large it was when it was opened. */
    qint64 openedSize() const { return m_opened.st_size; }
    /*! Where the next record is expected. */
    qint64 offset() const { return m_offset; }

    /*! The next record; false when there is none yet. */
    bool next(Record *record);
    /*! The same in two steps: the next of what has been read of the file, and a piece of reading on. */
    bool nextOfRead(Record *record);
    bool readOn();
    /*! Whether some of what was read has not been handed out yet. */
    bool hasRead() const { return m_position < m_buffer.size(); }
    /*! The same, or whether some can be read. */
    bool hasMore() const { return hasRead() || !m_isAtEnd || m_search; }
    /*! Whether somebody writes an update just now, or did when this was called. */
    bool isBeingWritten() const;
    /*! Whether too much of the file was no record: the rest of it is not read. */
    bool isMalformed() const { return m_isMalformed; }
    /*! Goes back to the first record, which holds the whole state as it was when the file was made. */
    void rewind();
    /*! What reading has cost since then, in bytes that were read or summed. */
    qint64 work() const { return m_work; }

private:
    enum State { Short, Wrong, Sound };

    bool mayTrust() const;
    State look();
    bool fill();
    bool search();
    bool checkAgain();
    void skipTo(qint64 offset, qint64 nonsense);
    void report();
    void giveUp();
    void drop();

    ZopPath m_path;
    FileDescriptor m_file;
    struct stat m_opened = {}; // as the file was when it was opened
    Header m_header = {};
    Report m_report;
    qint64 m_offset = 0; // of the next record
    qint64 m_work = 0;
    qint64 m_told = 0;     // bytes of updates
    qint64 m_skipped = 0;  // bytes that were none
    qint64 m_nonsense = 0; // bytes before m_offset that were none, and have not been reported
    bool m_isMalformed = false;

    QByteArray m_buffer; // what was read of the file
    int m_position = 0;  // of the next record in the buffer
    int m_summed = 0;    // bytes of its payload
    quint32 m_sum = 0;
    bool m_isAtEnd = false;

    std::optional<RecordSearch> m_search; // while it goes on; hardly any file needs one
    std::optional<RecordSearch> m_again;  // through what is about to be stepped over
    qint64 m_foundAt = -1;                // a record, says the search
};

} // namespace Journal
} // namespace morvek

#endif
