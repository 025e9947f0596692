// SPDX-License-Identifier: Apache-2.0
// A journal that is written, damaged and read by turns. Whatever stands between them, every whole record is told, once
// and in order, and nothing else is.
#include "journal.h"

#include "journalroot.h"
#include "krellogger.h"
#include "updatewalk.h"

using namespace morvek;

namespace {

enum Step { WriteRecord, WriteLarge, WriteNonsense, WriteDamaged, WriteUnfinished, WriteWrongPayload, Read, StepCount };

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
        }
    }

    /*! Whatever was left unfinished is stepped over once something follows. */
    void end()
    {
        writeRecord("end");
        read();
        Fuzz::expectEqual(m_told, m_whole, "the records that are told");
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

    void read()
    {
        Journal::Record record;
        while (m_reader.next(&record))
            m_told.append({record.writer, UpdateWalk::of(record.changes)});
    }

    const JournalRoot &m_file;
    Journal::Reader m_reader;
    quint64 m_writer = 0;
    int m_large = 0;
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
