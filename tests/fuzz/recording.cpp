// SPDX-License-Identifier: Apache-2.0
// Recordings. What is taken is the same when it is written and read again. Redacted, it is still one, and tells of no
// name and no address that "@@", "@#" and "@:" stand for.
#include "recording.h"
#include "fuzz.h"
#include "recordingline.h"
#include "redaction.h"

#include <QtCore/QDateTime>

using namespace morvek;

namespace {

const QByteArray Name("Zanzibar-Qx");
const QByteArray Address("11.222.133.44");
const QByteArray Hardware("7a:5b:3c:9d:8e:f1");

QByteArray linesOf(const QVector<RecordedEvent> &events)
{
    QByteArray lines = RecordingLine::first(QDateTime(), false);
    for (const RecordedEvent &event : events)
        lines += RecordingLine::of(event);
    return lines;
}

Recording read(const QByteArray &lines, const char *what)
{
    Recording recording;
    QString error;
    if (!Recording::read(lines, &recording, &error))
        Fuzz::disagree(QLatin1String(what) + QLatin1String(": ") + error + QLatin1Char('\n') + Fuzz::text(lines));
    return recording;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input = Fuzz::bytes(data, size).replace("@@", Name).replace("@#", Address).replace("@:", Hardware);
    Recording recording;
    QString error;
    const bool isTaken = Recording::read(input, &recording, &error);
    Fuzz::expectEqual(error.isEmpty(), isTaken, "whether there is a reason");
    if (!isTaken)
        return 0;
    const QByteArray lines = linesOf(recording.events);
    Fuzz::expectEqual(linesOf(read(lines, "it can be read again").events), lines, "what is read again");

    Redaction redaction;
    QVector<RecordedEvent> redacted;
    for (RecordedEvent event : qAsConst(recording.events)) {
        if (redaction.apply(&event))
            redacted += event;
    }
    const QByteArray others = linesOf(redacted);
    read(others, "it can be read when it is redacted");
    for (const QByteArray &secret : {Name, Address, Hardware})
        Fuzz::expect(!others.contains(secret), secret.constData());
    return 0;
}
