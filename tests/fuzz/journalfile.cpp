// SPDX-License-Identifier: Apache-2.0
// Any bytes as the file of an object. The first byte decides whether the header is made sound first. Only records that
// stand in the file and are sound are told, in their order, and reading ends.
#include "journalbytes.h"

#include "journal.h"
#include "krellogger.h"

using namespace morvek;

namespace {

/*! Whether a sound record of the file ends at \a end; tells where it begins. */
bool isSoundRecord(const QByteArray &file, quint64 writer, qint64 end, qint64 *begin)
{
    const QByteArray marker = file.mid(8, 8);
    for (int at = file.indexOf(marker, JournalBytes::HeaderSize); at != -1; at = file.indexOf(marker, at + 1)) {
        if (at + JournalBytes::RecordHeaderSize > file.size())
            return false;
        const qint64 size = qint64(JournalBytes::numberAt(file, at + 16, 4));
        if (at + JournalBytes::RecordHeaderSize + size != end || end > file.size()
            || JournalBytes::numberAt(file, at + 8, 8) != writer)
            continue;
        const QByteArray summed = file.mid(at + 8, 8) + file.mid(at + JournalBytes::RecordHeaderSize, int(size));
        *begin = at;
        return JournalBytes::checksum(summed) == JournalBytes::numberAt(file, at + 20, 4);
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KrelLogger::setVerbosity(0);
    static const JournalBytes::JournalFile file;
    Fuzz::Bytes input(data, size);
    const bool mended = input.number() & 1;
    QByteArray bytes = input.rest();
    const bool hasHeader = bytes.size() >= JournalBytes::HeaderSize;
    if (mended && hasHeader)
        bytes = JournalBytes::withChecksum("ZOPJRNL1" + bytes.mid(8, JournalBytes::HeaderSize - 16))
            + bytes.mid(JournalBytes::HeaderSize);
    file.write(bytes);

    const bool sound = hasHeader && bytes.startsWith("ZOPJRNL1")
        && JournalBytes::withChecksum(bytes.left(JournalBytes::HeaderSize)) == bytes.left(JournalBytes::HeaderSize);
    Journal::Reader reader;
    QString error;
    Fuzz::expectEqual(reader.open(file.path(), &error), sound, "whether it is a journal");
    if (!sound) {
        Fuzz::expect(error.contains(QLatin1String("/a/b")), "the error names the file");
        return 0;
    }
    Journal::Record record;
    qint64 last = JournalBytes::HeaderSize;
    while (reader.next(&record)) {
        qint64 begin = 0;
        Fuzz::expect(isSoundRecord(bytes, record.writer, record.end, &begin), "only what stands in the file is told");
        Fuzz::expect(begin >= last, "records are told once and in order");
        last = record.end;
    }
    Fuzz::expect(!reader.next(&record), "the end is the end");
    return 0;
}
