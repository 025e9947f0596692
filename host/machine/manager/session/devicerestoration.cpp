// SPDX-License-Identifier: Apache-2.0
#include "devicerestoration.h"

#include "appliedsettings.h"
#include "eventlog.h"
#include "managerrefusal.h"

#include <algorithm>

namespace morvek {

namespace {

QStringList addressesOf(NMDevice *device)
{
    QStringList addresses;
    NMIPConfig *config = nm_device_get_ip4_config(device);
    const GPtrArray *all = config ? nm_ip_config_get_addresses(config) : nullptr;
    for (guint i = 0; all && i < all->len; ++i)
        addresses += QString::fromLatin1(nm_ip_address_get_address(static_cast<NMIPAddress *>(all->pdata[i])));
    return addresses;
}

} // namespace

DeviceRestoration::DeviceRestoration(ManagerClient *client, const QString &interface, const DeviceNotes &notes,
                                     const EventLog *log, QObject *parent)
    : QObject(parent),
      m_client(client),
      m_interface(interface),
      m_notes(notes),
      m_left(notes),
      m_log(log)
{
}

DeviceRestoration::~DeviceRestoration() = default;

void DeviceRestoration::start()
{
    connect(m_client, &ManagerClient::changed, this, &DeviceRestoration::goOn);
    QMetaObject::invokeMethod(this, &DeviceRestoration::goOn, Qt::QueuedConnection);
}

/*! As far as it goes now; the rest when something has changed. */
void DeviceRestoration::goOn()
{
    if (m_isAsking)
        return;
    NMDevice *device = m_client->device(m_interface);
    const auto isDone = [this, device](auto noted, Progress (DeviceRestoration::*step)(NMDevice *)) {
        if (!(m_notes.*noted))
            return true;
        if (!m_hasFailed && (this->*step)(device) == Progress::Waits)
            return false;
        if (!m_hasFailed)
            (m_left.*noted).reset();
        (m_notes.*noted).reset();
        m_hasAsked = m_hasFailed = false;
        return true;
    };
    if (const Refusal refusal = m_client->refusesToTouch(m_interface))
        tellLeft(refusal.text);
    else if (device
             && !(isDone(&DeviceNotes::connection, &DeviceRestoration::giveConnectionBack)
                  && isDone(&DeviceNotes::ipv4, &DeviceRestoration::giveSettingsBack)
                  && isDone(&DeviceNotes::autoconnect, &DeviceRestoration::giveAutoconnectBack) && !isActivating()))
        return;
    else if (!device && m_client->isRunning())
        m_left = DeviceNotes(); // one that is gone takes with it what was changed
    m_client->disconnect(this);
    Q_EMIT finished();
}

void DeviceRestoration::ask()
{
    m_isAsking = true;
    m_hasAsked = true;
}

void DeviceRestoration::answered(const GError *error)
{
    m_isAsking = false;
    m_hasFailed = error != nullptr;
    if (error)
        tellLeft(refusalOf(error).text);
    goOn();
}

void DeviceRestoration::tellLeft(const QString &reason)
{
    m_log->trouble(QStringLiteral("\"%1\" is not as it was: %2").arg(m_interface, reason));
}

DeviceRestoration::Progress DeviceRestoration::giveConnectionBack(NMDevice *device)
{
    if (m_active)
        return Progress::Done;
    const QString present = ManagerClient::profileOf(device);
    const NMDeviceState state = nm_device_get_state(device);
    if (present.isEmpty() && state > NM_DEVICE_STATE_DISCONNECTED && state <= NM_DEVICE_STATE_ACTIVATED)
        return Progress::Waits; // with what it is connected, is known in a moment
    if (!m_notes.isOurs(present) || present == *m_notes.connection) {
        m_active = refTo(nm_device_get_active_connection(device));
        return Progress::Done;
    }
    NMRemoteConnection *former =
        nm_client_get_connection_by_uuid(m_client->get(), m_notes.connection->toUtf8().constData());
    const bool mayActivate = state >= NM_DEVICE_STATE_DISCONNECTED;
    // One that is switched off at the machine is not waited for.
    if (former && !mayActivate && m_waitsForRadio && nm_client_wireless_hardware_get_enabled(m_client->get()))
        return Progress::Waits;
    if (m_hasAsked) // the answer is that it cannot be, or what has ended goes in a moment
        return former || present.isEmpty() ? Progress::Done : Progress::Waits;
    if (former && mayActivate) {
        activate(device, former);
        return Progress::Waits;
    }
    if (present.isEmpty())
        return Progress::Done;
    deactivate(device);
    return Progress::Waits;
}

/*! Out of range, that takes longer than anybody waits: whatever else is noted has been given back by then. */
bool DeviceRestoration::isActivating() const
{
    return m_active && nm_active_connection_get_state(m_active.get()) == NM_ACTIVE_CONNECTION_STATE_ACTIVATING;
}

void DeviceRestoration::activate(NMDevice *device, NMRemoteConnection *profile)
{
    ask();
    const auto ended = [this](GObject *source, GAsyncResult *result) {
        GErrorKeeper error;
        m_active.reset(nm_client_activate_connection_finish(NM_CLIENT(source), result, &error));
        answered(error.get());
    };
    nm_client_activate_connection_async(m_client->get(), NM_CONNECTION(profile), device, nullptr, nullptr,
                                        AsyncCall::ready, AsyncCall::make(this, ended));
}

void DeviceRestoration::deactivate(NMDevice *device)
{
    ask();
    const auto ended = [this](GObject *source, GAsyncResult *result) {
        GErrorKeeper error;
        nm_client_deactivate_connection_finish(NM_CLIENT(source), result, &error);
        answered(error.get());
    };
    nm_client_deactivate_connection_async(m_client->get(), nm_device_get_active_connection(device), nullptr,
                                          AsyncCall::ready, AsyncCall::make(this, ended));
}

DeviceRestoration::Progress DeviceRestoration::giveSettingsBack(NMDevice *device)
{
    if (ManagerClient::profileOf(device) != m_notes.reapplied)
        return Progress::Done;
    if (!m_hasAsked) {
        ask();
        AppliedSettings::read(device, this, [this](const QByteArray &applied, const GError *error) {
            if (error)
                answered(error);
            else
                replaceSettings(applied);
        });
        return Progress::Waits;
    }
    // Addresses come a moment later, and those of before go.
    const QStringList present = addressesOf(device);
    const QStringList ours = AppliedSettings::addressesOf(m_notes.ipv4->ours);
    const QStringList former = AppliedSettings::addressesOf(m_notes.ipv4->former);
    const bool isGone = std::all_of(ours.begin(), ours.end(), [&present, &former](const QString &address) {
        return former.contains(address) || !present.contains(address);
    });
    return isGone && (!present.isEmpty() || !AppliedSettings::givesAddresses(m_notes.ipv4->former)) ? Progress::Done
                                                                                                    : Progress::Waits;
}

/*!
 * A manager that was started again has applied the profile's own settings, and leaves addresses of ours beside them:
 * they go when it gets to know them once more.
 */
void DeviceRestoration::replaceSettings(const QByteArray &applied)
{
    NMDevice *device = m_client->device(m_interface);
    const auto giveFormer = [this](const GError *error) {
        NMDevice *present = m_client->device(m_interface);
        if (error || !present)
            answered(error);
        else
            AppliedSettings::replace(present, m_notes.ipv4->former, this, [this](const GError *why) { answered(why); });
    };
    const QStringList present = device ? addressesOf(device) : QStringList();
    const QStringList ours = AppliedSettings::addressesOf(m_notes.ipv4->ours);
    const bool hasOurs =
        std::any_of(ours.begin(), ours.end(), [&present](const QString &address) { return present.contains(address); });
    if (m_notes.isOurs(applied)) {
        giveFormer(nullptr);
    } else if (applied == m_notes.ipv4->former && hasOurs) {
        AppliedSettings::replace(device, m_notes.ipv4->ours, this, giveFormer);
    } else {
        m_notes.ipv4.reset(); // somebody else has applied them
        m_left.ipv4.reset();
        m_hasAsked = false;
        answered(nullptr);
    }
}

DeviceRestoration::Progress DeviceRestoration::giveAutoconnectBack(NMDevice *device)
{
    if (m_hasAsked || m_client->autoconnect(device) != m_notes.autoconnect->ours)
        return Progress::Done;
    ask();
    m_client->setAutoconnect(device, m_notes.autoconnect->former, this,
                             [this](const GError *error) { answered(error); });
    return Progress::Waits;
}

} // namespace morvek
