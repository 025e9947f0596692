// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_JOURNAL_H
#define MORVEK_JOURNAL_H

#include "filedescriptor.h"
#include "zopchangeset.h"
#include "zoppath.h"

#include <QtCore/QByteArray>

#include <sys/stat.h>

namespace morvek {

/*!
 * The file of a state object: a header, a record that holds the whole state, and a record for each update since.
 *
 * Updates are appended under a lock, so that they have one order; a record carries its length, a checksum and a
 * number of its file's own, by which a reader recognises what a killed writer left behind and steps over it.
 *
 * A file that has grown is replaced by its next generation, which begins with the state that the old one ended
 * with: readers finish the old file, which nobody writes any more, and go on behind the new one's first record.
 * A reader locks the generation that it reads. While somebody still reads the previous one, the file is not
 * replaced again, so that nobody can miss a generation; only past LargestFile is that readers' protection lifted.
 */
namespace Journal {

/*! Past this size, and four times the state's, a file is replaced. */
constexpr qint64 ReplacedAt = 256 * 1024;
/*! Past this size it is replaced even when a reader then misses updates. */
constexpr qint64 LargestFile = 64 * 1024 * 1024;

/*! What tells one file of an object from another. */
struct Identity
{
    quint64 incarnation = 0; //!< the same until the object is removed
    quint64 generation = 0;  //!< one more with each replacement
};

struct Record
{
    quint64 writer = 0;
    qint64 end = 0; //!< offset behind the record
    ZopChangeset changes;

    /*! Whether this is the first record of an object that was created without values. */
    bool isEmptyState() const { return writer == 0 && changes.assignments.isEmpty(); }
};

bool exists(const ZopPath &path);
/*! Whether it is certain that nothing is there; a file that cannot be looked at may be. */
bool isGone(const ZopPath &path);
/*! Creates the file with the assignments of \a values; false when there is one already. */
bool create(const ZopPath &path, const ZopChangeset &values, QString *error);
/*! The same in the place of whatever is there. */
bool createAnew(const ZopPath &path, const ZopChangeset &values, QString *error);
/*! Removes the file; false when there is none. */
bool remove(const ZopPath &path, QString *error);

class Reader
{
public:
    /*! False with errno, which is EBADMSG when the content is malformed; what was open stays so. */
    bool open(const ZopPath &path, QString *error);
    void close() { m_file.reset(); }
    bool isOpen() const { return m_file.isOpen(); }
    Identity identity() const { return m_identity; }

    /*! Whether the object's path names this very file: if not, it is complete. */
    bool isCurrent() const;
    /*! What is behind this offset now was not there when this was called. */
    qint64 size() const;

    /*! The next record; false when there is none yet. */
    bool next(Record *record);
    /*! The same in two steps: the next of what has been read of the file, and reading on. */
    bool nextOfRead(Record *record);
    bool readOn();
    /*! Whether some of what was read of the file has not been handed out yet. */
    bool hasMore() const { return m_position < m_buffer.size(); }
    /*! Goes back to the first record, which holds the whole state as it was when the file was made. */
    void rewind();

private:
    int recordAt(int position) const;
    bool fill();
    bool skip();
    void drop();

    ZopPath m_path;
    FileDescriptor m_file;
    Identity m_identity;
    quint64 m_marker = 0;
    qint64 m_offset = 0; // of the next record
    qint64 m_doubted = 0;
    QByteArray m_buffer; // what was read of the file
    int m_position = 0;  // of the next record in the buffer
    bool m_atEnd = false;
};

/*!
 * Judges from time to time whether a file is still that of the object which was published, and sound: whoever starts to
 * read it then knows what others know. What has not changed since is not read again.
 */
class Check
{
public:
    /*! False with the reason. The first file that passes is that of the object. */
    bool passes(const ZopPath &path, QString *error);
    /*! Of the object; 0 before it is known. */
    quint64 incarnation() const { return m_identity.incarnation; }

private:
    bool isUnchanged(const struct stat &present) const;
    bool isSuccessor(Identity identity, quint64 marker, const struct stat &present) const;

    Identity m_identity;
    quint64 m_marker = 0;
    struct stat m_last = {};
    bool m_isSettled = false;
};

class Writer
{
public:
    Writer();

    /*! Marks the records of this writer. */
    quint64 number() const { return m_number; }
    /*! From now on, updates go to the object of this incarnation only. */
    void expect(quint64 incarnation) { m_expected = incarnation; }
    /*! Appends \a changes as one record, or nothing at all. */
    bool append(const ZopPath &path, const ZopChangeset &changes, QString *error);

private:
    bool lock(const ZopPath &path, qint64 *size, QString *error);
    bool replace(const ZopPath &path, qint64 size);

    FileDescriptor m_file;
    quint64 m_marker = 0;
    qint64 m_size = 0; // of the file behind the last record of this writer
    qint64 m_replaceAt = 0;
    quint64 m_expected = 0; // no incarnation in particular
    quint64 m_number;
};

} // namespace Journal

} // namespace morvek

#endif
