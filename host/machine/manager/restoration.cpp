// SPDX-License-Identifier: Apache-2.0
#include "restoration.h"

#include "appliedsettings.h"
#include "eventlog.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

namespace morvek {

namespace {

// No object's name begins with a dot.
const char FileName[] = "/.morvek-hostd-session.json";

/*! The profile of the active connection of \a device; empty when there is none. */
QString profileOf(NMDevice *device)
{
    NMActiveConnection *active = nm_device_get_active_connection(device);
    return active ? QString::fromUtf8(nm_active_connection_get_uuid(active)) : QString();
}

} // namespace

Restoration::Restoration(ManagerClient *client, bool remember, const EventLog *log, QObject *parent)
    : QObject(parent),
      m_client(client),
      m_remembers(remember),
      m_log(log)
{
    connect(client, &ManagerClient::stateChanged, this,
            [this](NMDevice *device, NMDeviceState now, NMDeviceState, NMDeviceStateReason reason) {
                onStateChanged(device, now, reason);
            });
}

Restoration::~Restoration() = default;

void Restoration::setRoot(const QString &root)
{
    m_file = PrivateFile(QFile::encodeName(root) + FileName);
}

void Restoration::reapplies(NMDevice *device, NMConnection *present, NMConnection *next)
{
    if (m_remembers)
        return;
    m_notes.devices[ManagerClient::nameOf(device)].reapplies(profileOf(device), AppliedSettings::ipv4Of(present),
                                                             AppliedSettings::ipv4Of(next));
    keep();
}

void Restoration::activates(NMDevice *device, const QString &uuid)
{
    DeviceNotes &notes = m_notes.devices[ManagerClient::nameOf(device)];
    notes.connects(profileOf(device), uuid);
    // The manager lets it connect by itself again if only "disconnect" has forbidden it.
    if (!notes.autoconnect)
        Changed<bool>::note(&notes.autoconnect, nm_device_get_autoconnect(device), true);
    keep();
}

void Restoration::disconnects(NMDevice *device)
{
    if (m_remembers)
        return;
    DeviceNotes &notes = m_notes.devices[ManagerClient::nameOf(device)];
    notes.connects(profileOf(device), QString());
    // The manager switches it off then.
    Changed<bool>::note(&notes.autoconnect, nm_device_get_autoconnect(device), false);
    keep();
}

void Restoration::setAutoconnect(NMDevice *device, bool autoconnect)
{
    Changed<bool>::note(&m_notes.devices[ManagerClient::nameOf(device)].autoconnect, nm_device_get_autoconnect(device),
                        autoconnect);
    keep();
    m_client->setAutoconnect(device, autoconnect, this, [this](const GError *error) {
        if (error)
            m_log->trouble(QString::fromUtf8(error->message));
    });
}

void Restoration::setPower(bool on, const ManagerClient::ErrorCall &answer)
{
    if (!m_remembers) {
        Changed<bool>::note(&m_notes.power, nm_client_wireless_get_enabled(m_client->get()), on);
        const QVector<NMDevice *> devices = m_client->devices();
        for (NMDevice *device : devices) {
            if (NM_IS_DEVICE_WIFI(device) && !on)
                m_notes.devices[ManagerClient::nameOf(device)].connects(profileOf(device), QString());
        }
        keep();
    }
    m_client->setPower(on, this, answer);
}

void Restoration::giveConnectionBack(NMDevice *) { }

void Restoration::giveBack(const std::function<void()> &done)
{
    done();
}

/*! When a connection of ours is ended by somebody else, that is to stay so. */
void Restoration::onStateChanged(NMDevice *device, NMDeviceState now, NMDeviceStateReason reason)
{
    const auto notes = m_notes.devices.find(ManagerClient::nameOf(device));
    if (notes == m_notes.devices.end() || !notes->connection || notes->isDisconnected
        || now != NM_DEVICE_STATE_DEACTIVATING || reason != NM_DEVICE_STATE_REASON_USER_REQUESTED)
        return;
    notes->connection.reset();
    keep();
}

/*! Has the file say what the notes do. */
void Restoration::keep()
{
    for (auto it = m_notes.devices.begin(); it != m_notes.devices.end();)
        it = it->isEmpty() ? m_notes.devices.erase(it) : it + 1;
    QString error;
    const bool isKept =
        m_notes.isEmpty() ? m_file.remove(&error) : m_file.write(QJsonDocument(m_notes.toJson()).toJson(), &error);
    if (!isKept)
        m_log->trouble(QStringLiteral("\"%1\" does not say how the machine was: %2").arg(m_file.path(), error));
}

} // namespace morvek
