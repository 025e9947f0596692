// SPDX-License-Identifier: Apache-2.0
#include "stagewords.h"

#include "faultreader.h"
#include "timelinereader.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace morvek {

namespace {

/*! What stands behind "=": text, but for what is never one. */
QJsonValue plainValue(const QString &key, const QString &text)
{
    // The others are texts, though they may look like numbers: names of networks for one.
    static const QStringList numbers {
        QStringLiteral("back_after"), QStringLiteral("delay"),  QStringLiteral("err"),
        QStringLiteral("pass"),       QStringLiteral("reason"), QStringLiteral("signal_level"),
        QStringLiteral("since"),      QStringLiteral("skip"),   QStringLiteral("times")};
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (isNumber && numbers.contains(key))
        return number;
    if (key == QLatin1String("performs") && (text == QLatin1String("true") || text == QLatin1String("false")))
        return text == QLatin1String("true");
    return text;
}

/*! KEY=VALUE, or KEY:=JSON */
bool insertPair(QJsonObject *object, const QString &word, QString *error)
{
    const int equals = word.indexOf(QLatin1Char('='));
    const bool isJson = equals > 1 && word.at(equals - 1) == QLatin1Char(':');
    const QString key = word.left(isJson ? equals - 1 : equals);
    const QString text = word.mid(equals + 1);
    // In an array, as a document is one or an object.
    const QJsonArray json = QJsonDocument::fromJson('[' + text.toUtf8() + ']').array();
    if (equals < 1)
        *error = QStringLiteral("\"%1\" is neither KEY=VALUE nor KEY:=JSON").arg(word);
    else if (object->contains(key))
        *error = QStringLiteral("a second \"%1\"").arg(key);
    else if (isJson && json.size() != 1)
        *error = QStringLiteral("%1: \"%2\" is no JSON").arg(key, text);
    else
        object->insert(key, isJson ? json.at(0) : plainValue(key, text));
    return error->isEmpty();
}

} // namespace

QByteArray StageWords::request(const QStringList &words, QString *error)
{
    error->clear();
    const QString &verb = words.first();
    const QString first = words.value(1);
    if (first.startsWith(QLatin1Char('{')) && words.size() == 2 && verb == Act)
        return first.toUtf8().replace('\n', ' ').replace('\r', ' ');
    QJsonObject object;
    const bool looksAtAll = verb == Look && (first.isEmpty() || first.contains(QLatin1Char('=')));
    if (verb == Look)
        object.insert(Look, looksAtAll ? All : first);
    else if (first.isEmpty())
        *error = QStringLiteral("%1 what?").arg(verb);
    else if (verb == Pass)
        object.insert(Pass, plainValue(Pass, first));
    else
        object.insert(kindOf(first, error), first);
    const QStringList pairs = words.mid(looksAtAll ? 1 : 2);
    for (const QString &pair : pairs) {
        if (!insertPair(&object, pair, error))
            return {};
    }
    return error->isEmpty() ? QJsonDocument(object).toJson(QJsonDocument::Compact) : QByteArray();
}

QString StageWords::kindOf(const QString &word, QString *error)
{
    if (faultWords().contains(word))
        return Fault;
    if (eventWords().contains(word))
        return Event;
    *error = QStringLiteral("neither an event nor a fault: \"%1\" (events: %2; faults: %3)")
                 .arg(word, eventWords().join(QLatin1String(", ")), faultWords().join(QLatin1String(", ")));
    return QString();
}

} // namespace morvek
