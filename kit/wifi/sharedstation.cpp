// SPDX-License-Identifier: Apache-2.0
#include "sharedstation_p.h"

#include "publishedstatus.h"
#include "zoplook_p.h"

#include <asyncwificonnectoperation.h>
#include <wificonnectionconfig.h>
#include <wifiservice.h>
#include <zopvariant.h>

#include <utility>

namespace morvek {

namespace {

const QString LastEvent = QStringLiteral("last_event");

bool isSame(const SharedStation::State &one, const SharedStation::State &other)
{
    return one.powered == other.powered && one.accessPoint == other.accessPoint;
}

bool isOpen(const AsyncWifiConnectOperation &operation)
{
    return !operation.hasError() && operation.results().isEmpty();
}

} // namespace

SharedStation *SharedStation::of(WifiService *service)
{
    auto *station = service->findChild<SharedStation *>(QString(), Qt::FindDirectChildrenOnly);
    return station ? station : new SharedStation(service);
}

SharedStation::SharedStation(WifiService *service)
    : QObject(service)
{
    // The library tells the radio before it has read the connection of the same update.
    connect(service, &WifiService::readyChanged, this, &SharedStation::lookLater);
    connect(service, &WifiService::poweredChanged, this, &SharedStation::lookLater);
    connect(service, &WifiService::connectedChanged, this, &SharedStation::lookLater);
    look();
}

SharedStation::~SharedStation() = default;

WifiService *SharedStation::service() const
{
    return static_cast<WifiService *>(parent());
}

void SharedStation::look()
{
    m_looksLater = false;
    State now;
    if (service()->ready()) {
        openStatus();
        now.powered = service()->powered();
        now.accessPoint = service()->connectedAccessPoint();
    }
    if (isSame(m_state, now))
        return;
    m_state = now;
    if (m_awaitedPower == now.powered)
        m_awaitedPower.reset();
    if (!now.powered) {
        m_sinceScan.invalidate();
        setFound({});
    }
    Q_EMIT changed();
    Q_EMIT settled();
}

void SharedStation::lookLater()
{
    if (!std::exchange(m_looksLater, true))
        QMetaObject::invokeMethod(this, &SharedStation::look, Qt::QueuedConnection);
}

/*! A bell for what the library does not tell: the change to another access point, and why an attempt has failed. */
void SharedStation::openStatus()
{
    if (m_status)
        return;
    auto status = std::make_unique<ZopObject>(PublishedStatus::path(), ToRead, false, nullptr);
    if (!status->isValid())
        return;
    connect(status.get(), &ZopObject::attributesChanged, this, &SharedStation::lookLater);
    connect(status.get(), &ZopObject::attributeChanged, this, [this](const QString &name, const ZopVariant &value) {
        if (name == LastEvent)
            Q_EMIT eventTold(value.toString());
    });
    m_status = std::move(status);
}

void SharedStation::setFound(const Found &found)
{
    m_found = found;
    Q_EMIT foundChanged();
}

void SharedStation::beginScan()
{
    ++m_scans;
    Q_EMIT usageChanged();
}

void SharedStation::endScan()
{
    --m_scans;
    m_sinceScan.start();
    Q_EMIT usageChanged();
}

bool SharedStation::beginJoining(QObject *request, const QString &ssid)
{
    if (m_joining)
        return false;
    m_joining = request;
    m_joiningSsid = ssid;
    Q_EMIT usageChanged();
    return true;
}

void SharedStation::endJoining(const QObject *request)
{
    if (m_joining != request)
        return;
    m_joining.clear();
    Q_EMIT usageChanged();
}

AsyncWifiConnectOperation *SharedStation::connectAccessPoint(const WifiConnectionConfig &config)
{
    if (m_connect && isOpen(*m_connect))
        service()->disconnectAccessPoint();
    m_connect.reset(service()->connectAccessPoint(config));
    return m_connect.get();
}

void SharedStation::withdraw()
{
    if (!service()->connected())
        service()->disconnectAccessPoint();
}

void SharedStation::leave()
{
    Q_EMIT leaveAsked();
    service()->disconnectAccessPoint();
}

void SharedStation::setPowered(bool on)
{
    m_awaitedPower = on;
    Q_EMIT powerAsked(on);
    if (on)
        service()->powerOn();
    else
        service()->powerOff();
}

} // namespace morvek
