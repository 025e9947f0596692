// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_JOURNAL_H
#define MORVEK_JOURNAL_H

#include "journalreader.h"

#include <memory>

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
 * replaced again, so that nobody can miss a generation, unless that reader is further behind than readers may be.
 */
namespace Journal {

/*! Past this size, and four times the state's, a file is replaced. */
constexpr qint64 ReplacedAt = 16 * 1024;
/*! Past this size, and four times the state's, it is replaced even when a reader then misses updates. */
constexpr qint64 MostBehind = 4 * 1024 * 1024;

bool exists(const ZopPath &path);
/*! Whether it is certain that nothing is there; a file that cannot be looked at may be. */
bool isGone(const ZopPath &path);
/*! Creates the file with the assignments of \a values; false when there is one already. */
bool create(const ZopPath &path, const ZopChangeset &values, QString *error);
/*! The same in the place of whatever is there. */
bool createAnew(const ZopPath &path, const ZopChangeset &values, QString *error);
/*! Removes the file; false when there is none. */
bool remove(const ZopPath &path, QString *error);

class FoldedState;

class Writer
{
public:
    Writer();
    ~Writer();

    /*! Marks the records of this writer. */
    quint64 number() const { return m_number; }
    /*! From now on, updates go to the object of this incarnation only. */
    void expect(quint64 incarnation) { m_expected = incarnation; }
    /*! Appends \a changes as one record, or nothing at all. */
    bool append(const ZopPath &path, const ZopChangeset &changes, QString *error);
    /*! Whether the last update was the last one of its generation. */
    bool hasReplaced() const { return m_hasReplaced; }
    /*! Whether something that this writer has written was cut off. */
    bool hasLost(const ZopPath &path) const;
    /*!
     * Replaces the file by one with the state that its sound records come to. It seems to have missed a generation, so
     * that each reader tells what it knows otherwise. Not while somebody still reads the previous one.
     */
    bool renew(const ZopPath &path, QString *error);

private:
    bool open(const ZopPath &path, QString *error);
    bool lock(const ZopPath &path, qint64 *size, QString *error);
    bool isSound(const ZopPath &path, qint64 size, QString *error) const;
    bool fits(const ZopPath &path, const ZopChangeset &changes, int recordSize, qint64 end, QString *error);
    bool write(const QByteArray &record, qint64 size, QString *error);
    bool foldState(const ZopPath &path, QString *error);
    bool mayLeaveBehind(const ZopPath &path);
    bool replace(const ZopPath &path, quint64 generations = 1);
    void unlock();

    FileDescriptor m_file;
    struct stat m_place = {}; // of the file
    Header m_header = {};
    qint64 m_size = 0; // of the file behind the last record of this writer
    qint64 m_replaceAt = 0;
    bool m_hasReplaced = false;
    quint64 m_expected = 0; // no incarnation in particular
    quint64 m_number;
    std::unique_ptr<FoldedState> m_state; // while the file is so large that it matters
};

} // namespace Journal

} // namespace morvek

#endif
