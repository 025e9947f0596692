// SPDX-License-Identifier: Apache-2.0
#include "recording.h"

#include "attributereader.h"
#include "duplicatekey.h"
#include "jsonnode.h"
#include "recordingwords.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QSet>

#include <limits>

namespace morvek {

using namespace RecordingWords;

namespace {

// Days of a busy machine; whatever is larger is a device that never ends.
constexpr qint64 LargestFile = 512 * 1024 * 1024;

QJsonValue parse(const QByteArray &line, QString *error)
{
    const DuplicateKey duplicate = DuplicateKey::find(line);
    if (duplicate.offset != -1) {
        *error = QStringLiteral("a second \"%1\"").arg(duplicate.key);
        return {};
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(line, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        *error = QStringLiteral("column %1: %2").arg(parseError.offset + 1).arg(parseError.errorString());
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

void readFirst(const JsonNode &line)
{
    if (!line.has(Mark)) {
        line.fail(QStringLiteral("this is no recording"));
        return;
    }
    // Later versions may say more there.
    const int version = line.member(Mark).number(1, std::numeric_limits<int>::max());
    if (!line.hasFailed() && version > Version)
        line.fail(QStringLiteral("version %1 is too new: this one knows version %2").arg(version).arg(Version));
}

void readValues(const JsonNode &node, ZopChangeset *changes)
{
    const QVector<JsonNode> members = node.members();
    for (const JsonNode &member : members)
        changes->assignments.insert(member.key(), readAttributeValue(member));
}

RecordedEvent readEvent(const JsonNode &line)
{
    line.expectObject({Time, Object, Present, Created, Set, Removed, Gone});
    RecordedEvent event;
    event.time = line.member(Time).number(0, std::numeric_limits<int>::max());
    event.object = line.member(Object).text();
    const bool isUpdate = line.has(Set) || line.has(Removed);
    if (int(line.has(Present)) + int(line.has(Created)) + int(line.has(Gone)) + int(isUpdate) != 1) {
        line.fail(QStringLiteral("needs one of \"present\", \"created\", \"gone\", or \"set\" and \"removed\""));
        return event;
    }
    if (isUpdate) {
        event.kind = RecordedEvent::Updated;
        if (line.has(Set))
            readValues(line.member(Set), &event.changes);
        const QStringList removed = line.has(Removed) ? line.member(Removed).texts() : QStringList();
        event.changes.removals = QSet<QString>(removed.begin(), removed.end());
    } else if (line.has(Gone)) {
        event.kind = RecordedEvent::Gone;
        if (!line.member(Gone).flag())
            line.fail(QStringLiteral("\"gone\" can only be true"));
    } else {
        event.kind = line.has(Present) ? RecordedEvent::Present : RecordedEvent::Created;
        readValues(line.member(line.has(Present) ? Present : Created), &event.changes);
    }
    return event;
}

/*! What cannot have happened after \a last, when there are the objects of \a present; which are then those after it. */
QString contradiction(const RecordedEvent &event, const RecordedEvent *last, QSet<QString> *present)
{
    const bool begins = event.kind == RecordedEvent::Present || event.kind == RecordedEvent::Created;
    if (last && event.time < last->time)
        return QStringLiteral("is earlier than the line before");
    if (last && event.kind == RecordedEvent::Present && last->kind != RecordedEvent::Present)
        return QStringLiteral("\"present\" comes before everything else");
    if (begins == present->contains(event.object))
        return QStringLiteral("\"%1\" is %2")
            .arg(event.object, begins ? QStringLiteral("there already") : QStringLiteral("not there"));
    if (begins)
        present->insert(event.object);
    else if (event.kind == RecordedEvent::Gone)
        present->remove(event.object);
    return {};
}

} // namespace

bool Recording::load(const QString &fileName, Recording *recording, QString *error)
{
    QFile file(fileName);
    QByteArray lines;
    if (file.open(QIODevice::ReadOnly))
        lines = file.read(LargestFile + 1);
    if (file.error() != QFileDevice::NoError)
        *error = file.errorString();
    else if (lines.size() > LargestFile)
        *error = QStringLiteral("is larger than %1 MiB").arg(LargestFile / 1024 / 1024);
    else
        read(lines, recording, error);
    if (!error->isEmpty())
        error->prepend(fileName + QLatin1String(": "));
    return error->isEmpty();
}

bool Recording::read(const QByteArray &lines, Recording *recording, QString *error)
{
    *recording = Recording();
    QSet<QString> present;
    int number = 0;
    for (int begin = 0; begin < lines.size() || number == 0; ++number) {
        const int end = lines.indexOf('\n', begin);
        const QByteArray line = lines.mid(begin, end - begin);
        begin = end + 1;
        const JsonNode node(end == -1 ? QJsonValue() : parse(line, error), error);
        if (end == -1)
            *error = number == 0 ? QStringLiteral("this is no recording") : QStringLiteral("is cut off");
        else if (number == 0)
            readFirst(node);
        else if (error->isEmpty())
            recording->events += readEvent(node);
        if (number > 0 && error->isEmpty())
            *error = contradiction(recording->events.constLast(),
                                   number > 1 ? &recording->events.at(number - 2) : nullptr, &present);
        if (!error->isEmpty()) {
            error->prepend(QStringLiteral("line %1: ").arg(number + 1));
            return false;
        }
    }
    return true;
}

} // namespace morvek
