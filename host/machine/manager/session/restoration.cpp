// SPDX-License-Identifier: Apache-2.0
#include "restoration.h"

#include "appliedsettings.h"
#include "devicerestoration.h"
#include "eventlog.h"
#include "managerrefusal.h"

#include <chrono>
#include <utility>

namespace morvek {

namespace {

// A DHCP server answers within a second or so; a manager that is busy, or a radio, takes some.
constexpr std::chrono::seconds Limit {10};

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
    connect(client, &ManagerClient::changed, this, &Restoration::lookAtPower);
    m_limit.setSingleShot(true);
    m_limit.setInterval(Limit);
    connect(&m_limit, &QTimer::timeout, this, &Restoration::end);
}

Restoration::~Restoration() = default;

void Restoration::setFile(const SessionFile &file)
{
    m_file = file;
    QStringList unread;
    m_notes = m_file.takeUp(&unread);
    for (const QString &one : qAsConst(unread))
        m_log->trouble(QStringLiteral("how the machine was before cannot be read from ") + one);
}

void Restoration::reapplies(NMDevice *device, NMConnection *present, NMConnection *next)
{
    if (m_remembers)
        return;
    m_notes.devices[ManagerClient::nameOf(device)].reapplies(
        ManagerClient::profileOf(device), AppliedSettings::ipv4Of(present), AppliedSettings::ipv4Of(next));
    keep();
}

void Restoration::activates(NMDevice *device, const QString &uuid)
{
    DeviceNotes &notes = m_notes.devices[ManagerClient::nameOf(device)];
    notes.connects(ManagerClient::profileOf(device), uuid);
    // The manager lets it connect by itself again if only "disconnect" has forbidden it.
    if (!notes.autoconnect)
        Changed<bool>::note(&notes.autoconnect, m_client->autoconnect(device), true);
    keep();
}

void Restoration::disconnects(NMDevice *device)
{
    const QString interface = ManagerClient::nameOf(device);
    const QString present = ManagerClient::profileOf(device);
    // A connection that is not kept has taken the place of another one.
    if (m_remembers && !m_notes.devices.value(interface).isOurs(present))
        return;
    DeviceNotes &notes = m_notes.devices[interface];
    notes.connects(present, QString());
    // The manager switches it off then.
    Changed<bool>::note(&notes.autoconnect, m_client->autoconnect(device), false);
    keep();
}

void Restoration::setAutoconnect(NMDevice *device, bool autoconnect)
{
    Changed<bool>::note(&m_notes.devices[ManagerClient::nameOf(device)].autoconnect, m_client->autoconnect(device),
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
        m_hasSwitched = false;
        const QVector<NMDevice *> devices = m_client->devices();
        for (NMDevice *device : devices) {
            if (NM_IS_DEVICE_WIFI(device) && !on)
                m_notes.devices[ManagerClient::nameOf(device)].connects(ManagerClient::profileOf(device), QString());
        }
        keep();
    }
    m_client->setPower(on, this, answer);
}

void Restoration::giveConnectionBack(NMDevice *device)
{
    const QString interface = ManagerClient::nameOf(device);
    DeviceNotes noted = m_notes.devices.value(interface);
    noted.ipv4.reset();
    auto *restoration = new DeviceRestoration(m_client, interface, noted, m_log, this);
    connect(restoration, &DeviceRestoration::finished, this, [this, restoration, interface, noted] {
        restoration->deleteLater();
        const auto notes = m_notes.devices.find(interface);
        // Something else may be wanted by now.
        if (notes == m_notes.devices.end() || notes->ours != noted.ours)
            return;
        notes->connection = restoration->left().connection;
        notes->autoconnect = restoration->left().autoconnect;
        keep();
    });
    restoration->start();
}

void Restoration::giveBack(const std::function<void()> &done)
{
    m_done = done;
    if (m_notes.isEmpty() || !m_client->isRunning()) {
        end();
        return;
    }
    m_limit.start();
    // The radio first when it is to be on, and last when it is to be off: it is needed for the rest.
    if (m_notes.power && m_notes.power->former)
        givePowerBack([this] { giveDevicesBack(true); });
    else
        giveDevicesBack(false);
}

void Restoration::giveDevicesBack(bool hasSwitchedOn)
{
    m_open = 0;
    for (auto it = m_notes.devices.begin(); it != m_notes.devices.end(); ++it) {
        const QString &interface = it.key();
        const bool isRadio = NM_IS_DEVICE_WIFI(m_client->device(interface));
        if (isRadio && m_notes.power && m_notes.power->former)
            continue; // what is refused its power cannot be connected: that stays noted, too
        auto *restoration = new DeviceRestoration(m_client, interface, *it, m_log, this);
        if (isRadio && hasSwitchedOn)
            restoration->waitForRadio();
        connect(restoration, &DeviceRestoration::finished, this, [this, restoration, interface] {
            restoration->deleteLater();
            m_notes.devices[interface] = restoration->left();
            keep();
            if (--m_open == 0)
                giveLastBack();
        });
        ++m_open;
        restoration->start();
    }
    if (m_open == 0)
        giveLastBack();
}

void Restoration::giveLastBack()
{
    if (m_notes.power && !m_notes.power->former)
        givePowerBack([this] { end(); });
    else
        end();
}

void Restoration::givePowerBack(const std::function<void()> &done)
{
    const auto answered = [this, done](const Refusal &refusal) {
        if (refusal)
            m_log->trouble(QStringLiteral("the power of the radios is not as it was: ") + refusal.text);
        else
            m_notes.power.reset();
        keep();
        done();
    };
    if (bool(nm_client_wireless_get_enabled(m_client->get())) != m_notes.power->ours)
        answered({}); // somebody else has switched it
    else if (const Refusal refusal = m_client->refusesToTouchRadios())
        answered(refusal);
    else
        m_client->setPower(m_notes.power->former, this,
                           [answered](const GError *error) { answered(error ? refusalOf(error) : Refusal()); });
}

void Restoration::end()
{
    m_limit.stop();
    if (!m_notes.isEmpty())
        m_log->trouble(QStringLiteral("not everything is as it was yet: the next end or start goes on"));
    const auto left = findChildren<DeviceRestoration *>();
    for (DeviceRestoration *restoration : left) {
        restoration->disconnect(this);
        restoration->deleteLater();
    }
    if (const auto done = std::exchange(m_done, nullptr))
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

/*! When somebody else switches the power after the session has, that is to stay so. */
void Restoration::lookAtPower()
{
    if (!m_notes.power || !m_client->isRunning() || m_done)
        return;
    const bool isOurs = bool(nm_client_wireless_get_enabled(m_client->get())) == m_notes.power->ours;
    if (!isOurs && m_hasSwitched) {
        m_notes.power.reset();
        keep();
    }
    m_hasSwitched = isOurs;
}

/*! Has the file say what the notes do. */
void Restoration::keep()
{
    for (auto it = m_notes.devices.begin(); it != m_notes.devices.end();)
        it = it->isEmpty() ? m_notes.devices.erase(it) : it + 1;
    QString error;
    if (!m_file.write(m_notes, &error))
        m_log->trouble(QStringLiteral("\"%1\" does not say how the machine was: %2").arg(m_file.path(), error));
}

} // namespace morvek
