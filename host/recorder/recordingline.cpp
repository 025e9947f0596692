// SPDX-License-Identifier: Apache-2.0
#include "recordingline.h"

#include "recordingwords.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace morvek {

using namespace RecordingWords;

namespace {

QJsonValue textOf(const QByteArray &bytes)
{
    const QString text = QString::fromUtf8(bytes);
    return text.toUtf8() == bytes ? QJsonValue(text) : QJsonValue();
}

QJsonObject valueOf(const ZopVariant &value)
{
    QJsonObject object {{Encoding, QString::fromUtf8(value.encoding())}};
    const QByteArray bytes = value.bytes();
    const QJsonValue text = textOf(bytes);
    if (text.isString())
        object.insert(Text, text);
    else
        object.insert(Base64, QString::fromLatin1(bytes.toBase64()));
    return object;
}

QJsonObject valuesOf(const QMap<QString, ZopVariant> &assignments)
{
    QJsonObject object;
    for (auto it = assignments.begin(); it != assignments.end(); ++it)
        object.insert(it.key(), valueOf(it.value()));
    return object;
}

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/*! Of people's interest first: the keys of an object are sorted otherwise. */
QByteArray joined(const QJsonObject &first, const QJsonObject &second, const QJsonObject &third)
{
    return compact(first).chopped(1) + ',' + compact(second).mid(1).chopped(1) + ',' + compact(third).mid(1) + '\n';
}

QJsonObject whatHappened(const RecordedEvent &event)
{
    const QJsonObject values = valuesOf(event.changes.assignments);
    switch (event.kind) {
    case RecordedEvent::Present:
        return {{Present, values}};
    case RecordedEvent::Created:
        return {{Created, values}};
    case RecordedEvent::Gone:
        return {{Gone, true}};
    case RecordedEvent::Updated:
        break;
    }
    QJsonObject update;
    QStringList removals(event.changes.removals.begin(), event.changes.removals.end());
    removals.sort();
    if (!values.isEmpty() || removals.isEmpty())
        update.insert(Set, values);
    if (!removals.isEmpty())
        update.insert(Removed, QJsonArray::fromStringList(removals));
    return update;
}

} // namespace

QByteArray RecordingLine::first(const QDateTime &start, bool isRedacted)
{
    return joined({{Mark, Version}}, {{Start, start.toUTC().toString(Qt::ISODateWithMs)}}, {{Redacted, isRedacted}});
}

QByteArray RecordingLine::of(const RecordedEvent &event)
{
    return joined({{Time, event.time}}, {{Object, event.object}}, whatHappened(event));
}

} // namespace morvek
