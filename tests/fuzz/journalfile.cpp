// SPDX-License-Identifier: Apache-2.0
// Any bytes as the file of an object. The first byte decides whether the header is made sound first (1), but for the
// end of the first record (4), and the records that follow one another (2). An own walk says which sound records stand
// in the file: these are told, in their order, and nothing else.
#include "journalroot.h"

#include "journal.h"
#include "krellogger.h"
#include "updatewalk.h"

using namespace morvek;
using namespace JournalBytes;

namespace {

struct Told
{
    quint64 writer;
    qint64 end;
    UpdateWalk::Update update;

    bool operator==(const Told &other) const
    {
        return writer == other.writer && end == other.end && update == other.update;
    }
};

QDebug operator<<(QDebug debug, const Told &told)
{
    return debug << told.writer << told.end << told.update;
}

/*! Where the record at \a at of \a file ends, if it is one; otherwise -1. */
int recordEnd(const QByteArray &file, int at)
{
    if (at + RecordHeaderSize > file.size())
        return -1;
    const qint64 end = at + RecordHeaderSize + qint64(numberAt(file, at + 16, 4));
    return end <= file.size() ? int(end) : -1;
}

quint32 recordChecksum(const QByteArray &file, int at, int end)
{
    return checksum(file.mid(at + 8, 8) + file.mid(at + RecordHeaderSize, end - at - RecordHeaderSize));
}

bool isSoundRecord(const QByteArray &file, int at)
{
    const int end = recordEnd(file, at);
    return end != -1 && file.mid(at, 8) == file.mid(8, 8)
        && recordChecksum(file, at, end) == numberAt(file, at + 20, 4);
}

/*! The records of a file that nobody writes: what is between sound ones is stepped over. */
QList<Told> recordsOf(const QByteArray &file)
{
    QList<Told> told;
    int at = HeaderSize;
    while (at < file.size()) {
        if (!isSoundRecord(file, at)) {
            ++at;
            continue;
        }
        const int end = recordEnd(file, at);
        const UpdateWalk::Walk walk(file.mid(at + RecordHeaderSize, end - at - RecordHeaderSize));
        if (walk.isWhole())
            told.append({numberAt(file, at + 8, 8), end, walk.update()});
        at = end;
    }
    return told;
}

bool isSoundHeader(const QByteArray &file)
{
    const quint64 stateEnd = numberAt(file, 32, 8);
    return file.startsWith("ZOPJRNL1") && withChecksum(file.left(HeaderSize)) == file.left(HeaderSize)
        && numberAt(file, 8, 8) != 0 && stateEnd >= HeaderSize
        && stateEnd <= HeaderSize + RecordHeaderSize + 16 * 1024 * 1024;
}

QByteArray withSoundHeader(const QByteArray &file, bool isUnlikely)
{
    const QByteArray stateEnd = isUnlikely ? file.mid(32, 8) : number(HeaderSize, 8);
    return withChecksum("ZOPJRNL1" + file.mid(8, 24) + stateEnd + file.mid(40, 8)) + file.mid(HeaderSize);
}

QByteArray withSoundRecords(QByteArray file)
{
    int end = 0;
    for (int at = HeaderSize; (end = recordEnd(file, at)) != -1; at = end)
        file.replace(at, 8, file.mid(8, 8)).replace(at + 20, 4, number(recordChecksum(file, at, end), 4));
    return file;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KrelLogger::setVerbosity(0);
    static const JournalRoot file;
    Fuzz::Bytes input(data, size);
    const int mended = input.number();
    QByteArray bytes = input.rest();
    const bool hasHeader = bytes.size() >= HeaderSize;
    if (hasHeader && (mended & 1))
        bytes = withSoundHeader(bytes, mended & 4);
    if (hasHeader && (mended & 2))
        bytes = withSoundRecords(bytes);
    file.write(bytes);

    const bool sound = hasHeader && isSoundHeader(bytes);
    Journal::Reader reader;
    QString error;
    Fuzz::expectEqual(reader.open(file.path(), &error), sound, "whether it is a journal");
    if (!sound) {
        Fuzz::expect(error.contains(QLatin1String("/a/b")), "the error names the file");
        return 0;
    }
    QList<Told> told;
    Journal::Record record;
    while (reader.next(&record))
        told.append({record.writer, record.end, UpdateWalk::of(record.changes)});
    Fuzz::expectEqual(told, recordsOf(bytes), "the records that are told");
    Fuzz::expect(!reader.next(&record), "the end is the end");
    // What looks like a record costs more than its bytes, and so does each of those that overlap.
    const int markers = bytes.count(bytes.mid(8, 8));
    Fuzz::expect(reader.work() < 10 * bytes.size() + 4096 * (1 + markers), "the work is that of the bytes");
    return 0;
}
