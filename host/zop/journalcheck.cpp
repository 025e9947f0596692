// SPDX-License-Identifier: Apache-2.0
#include "journalcheck.h"

#include "journalreader.h"
#include "zopwire.h"

#include <sys/stat.h>

using namespace morvek;

namespace {

/*! What is wrong with the file of \a path before it is looked into. */
QStringList outerTroubles(const ZopPath &path)
{
    struct stat status;
    QStringList troubles;
    if (!path.place().status(&status) || !S_ISREG(status.st_mode))
        return troubles; // which opening tells
    if (status.st_uid != geteuid())
        troubles += QStringLiteral("the file belongs to another user");
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        troubles += QStringLiteral("other users may use the file: its mode is 0%1").arg(status.st_mode & 07777, 0, 8);
    return troubles;
}

QString bytes(qint64 from, qint64 end)
{
    return QStringLiteral("bytes %1 to %2").arg(from).arg(end - 1);
}

} // namespace

JournalCheck::JournalCheck(const ZopPath &path)
    : troubles(outerTroubles(path))
{
    Journal::Reader reader;
    QString error;
    if (!reader.open(path, &error)) {
        troubles += error;
        return;
    }
    reader.setReport([this](qint64 offset, qint64 size) {
        troubles += bytes(offset, offset + size) + QStringLiteral(" are no update");
    });
    const auto stateEnd = qint64(reader.header().stateEnd);
    int updates = 0;
    bool hasState = stateEnd == qint64(sizeof(Journal::Header));
    ZopChangeset state;
    Journal::Record record;
    while (reader.next(&record)) {
        if (record.end == stateEnd)
            hasState = true;
        else
            ++updates;
        apply(record.changes, &state.assignments);
    }
    if (!hasState)
        troubles += QStringLiteral("the state that the file began with is missing");
    if (reader.isMalformed())
        troubles += Journal::tooMuchNonsense(path);
    else if (reader.offset() < reader.size())
        troubles += bytes(reader.offset(), reader.size())
            + QStringLiteral(" are no whole update: it is being written, or its writer was killed");
    const qint64 size = qint64(sizeof(Journal::RecordHeader)) + encodeChangeset(state).size();
    if (size > LargestUpdate)
        troubles += QStringLiteral("the state is too large: only updates that change this are taken");
    summary = QStringLiteral("generation %1, updates: %2, attributes: %3, bytes of state: %4")
                  .arg(reader.identity().generation)
                  .arg(updates)
                  .arg(state.assignments.size())
                  .arg(size);
}
