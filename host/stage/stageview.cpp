// SPDX-License-Identifier: Apache-2.0
#include "stageview.h"

#include "attributes.h"
#include "daemon.h"
#include "faultplan.h"
#include "requestbook.h"
#include "wirenames.h"

namespace morvek {

namespace {

void insertUnlessEmpty(QJsonObject *object, const QString &key, const QString &value)
{
    if (!value.isEmpty())
        object->insert(key, value);
}

/*! Nearly as the event "set" takes it: an object of JSON stands as such. */
QJsonValue valueOf(const ZopVariant &value)
{
    const QJsonDocument document = value.encoding() == "json" ? value.toJson() : QJsonDocument();
    if (document.isArray())
        return document.array();
    if (document.isObject())
        return document.object();
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    if (value.encoding() == "number" && isNumber)
        return number;
    const QString text = value.toString();
    const bool isText = text.toUtf8() == value.bytes();
    if (isText && value.encoding() == "text")
        return text;
    QJsonObject object {{QStringLiteral("encoding"), QString::fromUtf8(value.encoding())}};
    if (isText)
        object.insert(QStringLiteral("text"), text);
    else
        object.insert(QStringLiteral("base64"), QString::fromLatin1(value.bytes().toBase64()));
    return object;
}

} // namespace

QJsonArray StageView::requests(const RequestBook &book, int since)
{
    QJsonArray array;
    for (const RequestBook::Entry &entry : book.entries()) {
        if (entry.number <= since)
            continue;
        QJsonObject request {
            {QStringLiteral("number"), entry.number},
            {QStringLiteral("at"), entry.at},
            {QStringLiteral("daemon"), entry.daemon},
            {QStringLiteral("message"), entry.message},
            {QStringLiteral("text"), entry.text},
            {QStringLiteral("answers"), QJsonArray::fromStringList(entry.answers)},
        };
        insertUnlessEmpty(&request, QStringLiteral("interface"), entry.interface);
        insertUnlessEmpty(&request, Wire::Ssid, entry.ssid);
        array += request;
    }
    return array;
}

QJsonObject StageView::objects()
{
    QStringList paths {Wire::StatusObject, Wire::WifiStatusObject, Wire::TetheringStatusObject};
    QStringList interfaces;
    QString error;
    ObjectPublisher::list(Wire::InterfacesDirectory, &interfaces, &error);
    for (const QString &name : qAsConst(interfaces))
        paths += Wire::InterfacesDirectory + QLatin1Char('/') + name;
    QJsonObject objects;
    for (const QString &path : qAsConst(paths)) {
        Attributes attributes;
        if (!ObjectPublisher::read(path, &attributes))
            continue;
        QJsonObject values;
        for (auto it = attributes.cbegin(); it != attributes.cend(); ++it)
            values.insert(it.key(), valueOf(it.value()));
        objects.insert(path, values);
    }
    return objects;
}

QJsonArray StageView::faults(const FaultPlan &plan)
{
    QJsonArray array;
    for (const Fault &fault : plan.faults()) {
        if (fault.times == 0)
            continue;
        // Not what an answer carries: that may be a profile with its passphrase.
        QJsonObject object {{QStringLiteral("fault"), fault.word}};
        insertUnlessEmpty(&object, QStringLiteral("message"), fault.message);
        insertUnlessEmpty(&object, QStringLiteral("interface"), fault.interface);
        insertUnlessEmpty(&object, Wire::Ssid, fault.ssid);
        if (fault.skip > 0)
            object.insert(QStringLiteral("skip"), fault.skip);
        if (fault.times > 0)
            object.insert(QStringLiteral("times"), fault.times);
        array += object;
    }
    return array;
}

QJsonObject StageView::daemons(const QMap<Service, Daemon *> &daemons)
{
    QJsonObject object;
    for (auto it = daemons.cbegin(); it != daemons.cend(); ++it)
        object.insert(nameOf(it.key()),
                      !it.value()                ? QStringLiteral("left out")
                          : it.value()->isDead() ? QStringLiteral("dead")
                                                 : QStringLiteral("alive"));
    return object;
}

} // namespace morvek
