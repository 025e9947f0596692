// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_JOURNALFILE_H
#define MORVEK_JOURNALFILE_H

#include "filedescriptor.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <limits>

struct flock;
struct stat;

namespace morvek {

class FilePlace;
class ZopPath;

/*! What a journal's bytes mean, and how they are read. */
namespace Journal {

constexpr char Magic[8] = {'Z', 'O', 'P', 'J', 'R', 'N', 'L', '1'};

/*! So many bytes, holes not counted, may be no record. With more of them a file is malformed. */
constexpr qint64 LargestNonsense = 64 * 1024 * 1024;
/*! What is read at a time. */
constexpr int ChunkSize = 64 * 1024;

/*! What tells one file of an object from another. */
struct Identity
{
    quint64 incarnation = 0; //!< the same until the object is removed
    quint64 generation = 0;  //!< one more with each replacement
};

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
    quint32 checksum; // of the writer's number and the payload
};

// The bytes that are locked: each generation has one for its writers and one for its readers.
enum LockedByte { WritersByte, ReadersByte };

struct flock lockOn(LockedByte byte, short type);
/*! Keeps other writers from the file that is open as \a file. */
bool lockForWriting(const ZopPath &path, const FileDescriptor &file, QString *error);

quint32 checksum(const void *bytes, size_t size, quint32 start = 0);
quint32 headerChecksum(const Header &header);

/*! Opens the object's file and reads its header; when that is not sound, or this is no file, errno is EBADMSG. */
FileDescriptor openFile(const ZopPath &path, int flags, Header *header, QString *error);
/*! Whether \a place has the file that is open as \a file, and then how large it is. */
bool names(const FilePlace &place, const FileDescriptor &file, qint64 *size = nullptr);
/*! The same of the file that a look has found. */
bool names(const FilePlace &place, const struct stat &file, qint64 *size = nullptr);
/*! How large the file is; 0 when that cannot be told. */
qint64 sizeOf(int file);
/*! Whether \a error of an open that follows no links says that there is no file, but something else. */
bool isNoFile(int error);
QString noSuchObject();
QString anotherObject();
/*! Why nothing of the object's file is believed, or nothing more. */
QString malformed(const ZopPath &path, const QString &reason);
QString tooMuchNonsense(const ZopPath &path);
QString cutOff(const ZopPath &path);

} // namespace Journal

} // namespace morvek

#endif
