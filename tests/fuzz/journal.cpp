// SPDX-License-Identifier: Apache-2.0
// A journal that is written, damaged and read by turns. Whatever stands between them, every whole record is told, once
// and in order, and nothing else is; and what that costs is in proportion to the bytes.
#include "journal.h"

#include "journalroot.h"
#include "krellogger.h"
#include "updatewalk.h"

using namespace morvek;

namespace {

enum Step {
    WriteRecord,
    WriteLarge,
    WriteNonsense,
    WriteDamaged,
    WriteUnfinished,
    WriteWrongPayload,
    Read,
    WriteClaims,
    WriteHole,
    StepCount
};

class Play
{
public:
    explicit Play(const JournalRoot &file)
        : m_file(file)
    {
        m_file.write(JournalBytes::header());
        QString error;
        Fuzz::expect(m_reader.open(m_file.path(), &error), "the journal opens");
    }

    void step(Fuzz::Bytes &input)
    {
        switch (input.number() % StepCount) {
        case WriteRecord:
            writeRecord(input.take(input.number()));
            break;
        case WriteLarge: // past what is read at a time
            writeRecord(QByteArray(m_large++ < 2 ? input.number() * 300 : 0, char(input.number())));
            break;
        case WriteNonsense:
            m_file.append(input.take(input.number()));
            break;
        case WriteDamaged:
            writeDamaged(input);
            break;
        case WriteUnfinished:
            m_file.append(nextRecord(input.take(input.number())).left(input.number()).left(unfinishedSize()));
            break;
        case WriteWrongPayload: // as no writer makes it, but with its checksum
            m_file.append(JournalBytes::record(++m_writer, JournalBytes::number(9, 4) + input.take(3)));
            break;
        case Read:
            read();
            break;
        case WriteClaims:
            writeClaims(input);
            break;
        case WriteHole:
            if (m_holes++ == 0)
                m_file.growTo(m_file.size() + (qint64(input.number()) << 24));
            break;
        }
    }

    /*! Whatever was left unfinished is stepped over once something follows. */
    void end()
    {
        writeRecord("end");
        read();
        Fuzz::expectEqual(m_told, m_whole, "the records that are told");
        Fuzz::expect(m_reader.work() < workFor(m_file.dataSize()), "the work is that of the bytes");
    }

private:
    QByteArray nextRecord(const QByteArray &value) { return JournalBytes::record(++m_writer, payload(value)); }
    /*! An update that sets one attribute, leaves one without a value, and removes one. */
    static QByteArray payload(const QByteArray &value)
    {
        return JournalBytes::number(2, 4) + JournalBytes::block("name") + JournalBytes::block(value)
            + JournalBytes::block("text") + JournalBytes::block("none") + JournalBytes::number(0xffffffff, 4)
            + JournalBytes::block("gone");
    }
    /*! Shorter than any record that nextRecord() makes. */
    static int unfinishedSize() { return JournalBytes::RecordHeaderSize + payload({}).size() - 1; }

    void writeRecord(const QByteArray &value)
    {
        m_file.append(nextRecord(value));
        expectTold(value);
    }

    void expectTold(const QByteArray &value)
    {
        UpdateWalk::Update update;
        update.values = {{QStringLiteral("name"), {value, "text"}}, {QStringLiteral("none"), {}}};
        update.removals = {QStringLiteral("gone")};
        m_whole.append({m_writer, update});
    }

    void writeDamaged(Fuzz::Bytes &input)
    {
        const QByteArray value = input.take(input.number());
        QByteArray record = nextRecord(value);
        const int at = input.number() % record.size();
        const int difference = input.number();
        record[at] = char(record.at(at) ^ difference);
        m_file.append(record);
        if (difference == 0)
            expectTold(value);
    }

    /*! Headers of records that are not there, each of which claims the bytes of those that follow. */
    void writeClaims(Fuzz::Bytes &input)
    {
        const int count = 1 + input.number() * 5;
        const int shift = input.number() % 11;
        const quint32 size = quint32(input.number()) << shift;
        m_claims += count;
        m_file.append(JournalBytes::recordHeader(++m_writer, size, 0).repeated(count));
    }

    /*! Each byte may be read and summed a few times, and each read takes a look at what is at the end. */
    qint64 workFor(qint64 size) const
    {
        constexpr qint64 Claimed = 16 * 1024 * 1024; // of a hole, by a damaged record
        return 10 * size + m_claims * 4096 + m_reads * 200000 + m_holes * 4 * Claimed;
    }

    void read()
    {
        ++m_reads;
        Journal::Record record;
        while (m_reader.next(&record))
            m_told.append({record.writer, UpdateWalk::of(record.changes)});
    }

    const JournalRoot &m_file;
    Journal::Reader m_reader;
    quint64 m_writer = 0;
    int m_large = 0;
    int m_holes = 0;
    int m_claims = 64; // damaged records are some, too
    int m_reads = 0;
    QList<QPair<quint64, UpdateWalk::Update>> m_whole;
    QList<QPair<quint64, UpdateWalk::Update>> m_told;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KrelLogger::setVerbosity(0);
    static const JournalRoot file;
    Fuzz::Bytes input(data, size);
    Play play(file);
    for (int i = 0; i < 64 && !input.isAtEnd(); ++i)
        play.step(input);
    play.end();
    return 0;
}
