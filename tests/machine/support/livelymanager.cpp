// SPDX-License-Identifier: Apache-2.0
#include "livelymanager.h"

namespace {

constexpr int Tick = 20;         // milliseconds
constexpr int TicksOfIdling = 5; // until the radio is brought to its user's network

constexpr uint Unavailable = 20;
constexpr uint Disconnected = 30;
constexpr uint Config = 50;
constexpr uint NeedAuth = 60;
constexpr uint Failed = 120;
constexpr uint NoSecrets = 7;
constexpr uint SupplicantDisconnect = 8;
constexpr uint SupplicantAvailable = 42;

constexpr uint Station = 2; // modes
constexpr uint AccessPoint = 3;

const QString State = QStringLiteral("State");

} // namespace

LivelyManager::LivelyManager()
    : m_radio(addWifi(QStringLiteral("wlan0")))
{
    connect(this, &BusObjects::called, this, [this](const BusCall &call) {
        m_isScanning = m_isScanning || call.member == QLatin1String("RequestScan");
    });
    connect(&m_clock, &QTimer::timeout, this, &LivelyManager::go);
    m_clock.start(Tick);
}

void LivelyManager::joinAsTheUser(const QByteArray &ssid, const QString &accessPoint)
{
    m_profile = addProfile(
        {{QStringLiteral("connection"), {{QStringLiteral("type"), QStringLiteral("802-11-wireless")}}},
         {QStringLiteral("802-11-wireless"), {{QStringLiteral("ssid"), ssid}}},
         {QStringLiteral("802-11-wireless-security"),
          {{QStringLiteral("key-mgmt"), QStringLiteral("wpa-psk")}, {QStringLiteral("psk"), m_passkeys.value(ssid)}}}});
    beginActivation(m_radio, m_profile, accessPoint);
    enter();
}

/*! One thing at a time, as everything of this takes its time. */
void LivelyManager::go()
{
    const QMutexLocker locker(mutex());
    const auto state = value<uint>(m_radio, State);
    const bool isOn = value(managerPath(), QStringLiteral("WirelessEnabled")).toBool();
    if (isOn != (state > Unavailable)) {
        switchRadio(isOn);
    } else if (m_isScanning && isOn) {
        m_isScanning = false;
        finishScan(m_radio);
    } else if (state == Disconnected) {
        rest();
    } else if (state > Disconnected && state < Config) {
        setState(m_radio, Config);
    } else if (state == Config) {
        enter();
    }
}

void LivelyManager::switchRadio(bool on)
{
    setState(m_radio, on ? Disconnected : Unavailable, on ? SupplicantAvailable : 0);
    leaveAddresses();
    m_idle = 0;
}

void LivelyManager::rest()
{
    if (value<uint>(m_radio, QStringLiteral("Mode")) == AccessPoint)
        change(m_radio, {{QStringLiteral("Mode"), Station}});
    leaveAddresses();
    if (!m_profile.isEmpty() && value(m_radio, QStringLiteral("Autoconnect")).toBool() && ++m_idle > TicksOfIdling)
        beginActivation(m_radio, m_profile);
}

/*! A network that nobody serves is looked for on and on. */
void LivelyManager::enter()
{
    m_idle = 0;
    const BusSettings settings = applied(m_radio);
    const QVariantMap wireless = settings.value(QStringLiteral("802-11-wireless"));
    const QByteArray ssid = wireless.value(QStringLiteral("ssid")).toByteArray();
    if (wireless.value(QStringLiteral("mode")) == QLatin1String("ap")) {
        change(m_radio, {{QStringLiteral("Mode"), AccessPoint}});
        activate(m_radio);
        setIp4(m_radio, {QStringLiteral("10.42.0.1/24")});
        return;
    }
    if (!contains(pathValue(m_radio, QStringLiteral("ActiveAccessPoint"))))
        return;
    if (settings.value(QStringLiteral("802-11-wireless-security")).value(QStringLiteral("psk")).toString()
        != m_passkeys.value(ssid)) {
        setState(m_radio, NeedAuth, SupplicantDisconnect);
        setState(m_radio, Failed, NoSecrets);
        setState(m_radio, Disconnected);
        return;
    }
    activate(m_radio);
    setLease(m_radio, {{QStringLiteral("ip_address"), QStringLiteral("10.5.0.100")}});
    setIp4(m_radio, {QStringLiteral("10.5.0.100/24")}, QStringLiteral("10.5.0.1"), 600);
}

void LivelyManager::leaveAddresses()
{
    if (!contains(pathValue(m_radio, QStringLiteral("Ip4Config"))))
        return;
    setLease(m_radio, {});
    setIp4(m_radio, {});
}
