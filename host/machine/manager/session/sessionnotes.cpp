// SPDX-License-Identifier: Apache-2.0
#include "sessionnotes.h"

#include <QtCore/QJsonArray>

namespace morvek {

namespace {

const QString Former = QStringLiteral("former");
const QString Ours = QStringLiteral("ours");
const QString Earlier = QStringLiteral("earlier");
const QString Connection = QStringLiteral("connection");
const QString Ipv4 = QStringLiteral("ipv4");
const QString Profile = QStringLiteral("profile");
const QString Autoconnect = QStringLiteral("autoconnect");
const QString Devices = QStringLiteral("devices");
const QString Power = QStringLiteral("power");

QJsonObject toJson(const Changed<bool> &changed)
{
    return {{Former, changed.former}, {Ours, changed.ours}};
}

std::optional<Changed<bool>> switchFrom(const QJsonObject &json)
{
    if (!json.value(Former).isBool() || !json.value(Ours).isBool())
        return std::nullopt;
    return Changed<bool> {json.value(Former).toBool(), json.value(Ours).toBool()};
}

QJsonObject toJson(const DeviceNotes &notes)
{
    QJsonObject json;
    if (notes.connection)
        json.insert(Connection,
                    QJsonObject {{Former, *notes.connection}, {Ours, QJsonArray::fromStringList(notes.ours)}});
    if (notes.ipv4)
        json.insert(Ipv4,
                    QJsonObject {{Profile, notes.reapplied},
                                 {Former, QString::fromUtf8(notes.ipv4->former)},
                                 {Ours, QString::fromUtf8(notes.ipv4->ours)},
                                 {Earlier, QString::fromUtf8(notes.earlier)}});
    if (notes.autoconnect)
        json.insert(Autoconnect, toJson(*notes.autoconnect));
    return json;
}

DeviceNotes deviceFrom(const QJsonObject &json)
{
    DeviceNotes notes;
    const QJsonObject connection = json.value(Connection).toObject();
    if (connection.value(Former).isString()) {
        notes.connection = connection.value(Former).toString();
        const QJsonArray ours = connection.value(Ours).toArray();
        for (const QJsonValue &profile : ours)
            notes.ours += profile.toString();
    }
    const QJsonObject ipv4 = json.value(Ipv4).toObject();
    if (!ipv4.isEmpty()) {
        notes.reapplied = ipv4.value(Profile).toString();
        notes.earlier = ipv4.value(Earlier).toString().toUtf8();
        notes.ipv4 = {ipv4.value(Former).toString().toUtf8(), ipv4.value(Ours).toString().toUtf8()};
    }
    notes.autoconnect = switchFrom(json.value(Autoconnect).toObject());
    return notes;
}

} // namespace

void DeviceNotes::connects(const QString &present, const QString &next)
{
    if (!isOurs(present)) {
        connection = present;
        ours.clear();
    }
    isDisconnected = next.isEmpty();
    if (!isDisconnected && !ours.contains(next))
        ours += next;
    // Settings are applied to an active connection: they are gone with it.
    ipv4.reset();
}

bool DeviceNotes::isOurs(const QString &present) const
{
    // One of ours that has failed leaves none.
    return connection && (present.isEmpty() || ours.contains(present));
}

void DeviceNotes::reapplies(const QString &present, const QByteArray &former, const QByteArray &next)
{
    if (isOurs(present))
        return;
    if (reapplied != present)
        ipv4.reset();
    reapplied = present;
    const bool wereOurs = isOurs(former);
    if (wereOurs)
        ipv4->ours = former;
    Changed<QByteArray>::note(&ipv4, former, next);
    earlier = wereOurs ? former : QByteArray();
}

QJsonObject SessionNotes::toJson() const
{
    QJsonObject noted;
    for (auto it = devices.begin(); it != devices.end(); ++it)
        noted.insert(it.key(), morvek::toJson(*it));
    QJsonObject json {{Devices, noted}};
    if (power)
        json.insert(Power, morvek::toJson(*power));
    return json;
}

SessionNotes SessionNotes::fromJson(const QJsonObject &json)
{
    SessionNotes notes;
    const QJsonObject devices = json.value(Devices).toObject();
    for (auto it = devices.begin(); it != devices.end(); ++it) {
        const DeviceNotes device = deviceFrom(it->toObject());
        if (!device.isEmpty())
            notes.devices.insert(it.key(), device);
    }
    notes.power = switchFrom(json.value(Power).toObject());
    return notes;
}

void SessionNotes::add(const SessionNotes &other)
{
    for (auto it = other.devices.begin(); it != other.devices.end(); ++it) {
        DeviceNotes &notes = devices[it.key()];
        if (!notes.connection) {
            notes.connection = it->connection;
            notes.ours = it->ours;
        }
        if (!notes.ipv4) {
            notes.reapplied = it->reapplied;
            notes.ipv4 = it->ipv4;
            notes.earlier = it->earlier;
        }
        if (!notes.autoconnect)
            notes.autoconnect = it->autoconnect;
    }
    if (!power)
        power = other.power;
}

} // namespace morvek
