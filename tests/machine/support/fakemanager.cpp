// SPDX-License-Identifier: Apache-2.0
#include "fakemanager.h"

#include <QtCore/QUuid>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMetaType>
#include <QtNetwork/QHostAddress>

#include <ctime>

namespace {

struct StateReason
{
    uint state;
    uint reason;
};

QDBusArgument &operator<<(QDBusArgument &argument, const StateReason &value)
{
    argument.beginStructure();
    argument << value.state << value.reason;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, StateReason &value)
{
    argument.beginStructure();
    argument >> value.state >> value.reason;
    argument.endStructure();
    return argument;
}

const QString Manager = QStringLiteral("org.freedesktop.NetworkManager");
const QString Folder = QStringLiteral("/org/freedesktop/NetworkManager");
const QString Device = Manager + QStringLiteral(".Device");
const QString Active = Manager + QStringLiteral(".Connection.Active");
const QString Connection = Manager + QStringLiteral(".Settings.Connection");
const QString AgentManager = QStringLiteral("/AgentManager");

constexpr uint Disconnected = 30;
constexpr uint Prepare = 40;
constexpr uint Activated = 100;
constexpr uint Deactivating = 110;
constexpr uint Failed = 120;
constexpr uint Volatile = 0x4;

QVariant object(const QString &path)
{
    return QVariant::fromValue(QDBusObjectPath(path));
}

QVariant none()
{
    return object(QStringLiteral("/"));
}

QVariant noObjects()
{
    return QVariant::fromValue(BusPaths());
}

QVariantMap with(QVariantMap map, const QVariantMap &changes)
{
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        if (!map.contains(change.key()))
            continue;
        QVariant value = change.value();
        value.convert(map.value(change.key()).userType());
        map.insert(change.key(), value);
    }
    return map;
}

qlonglong millisecondsSinceBoot()
{
    timespec now {};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

QVariantMap managerProperties(const QString &version)
{
    return {{QStringLiteral("Devices"), noObjects()},
            {QStringLiteral("AllDevices"), noObjects()},
            {QStringLiteral("Checkpoints"), noObjects()},
            {QStringLiteral("NetworkingEnabled"), true},
            {QStringLiteral("WirelessEnabled"), true},
            {QStringLiteral("WirelessHardwareEnabled"), true},
            {QStringLiteral("WwanEnabled"), true},
            {QStringLiteral("WwanHardwareEnabled"), true},
            {QStringLiteral("ActiveConnections"), noObjects()},
            {QStringLiteral("PrimaryConnection"), none()},
            {QStringLiteral("PrimaryConnectionType"), QString()},
            {QStringLiteral("Metered"), 0U},
            {QStringLiteral("ActivatingConnection"), none()},
            {QStringLiteral("Startup"), false},
            {QStringLiteral("Version"), version},
            {QStringLiteral("Capabilities"), QVariant::fromValue(QList<uint> {1})},
            {QStringLiteral("State"), 20U},
            {QStringLiteral("Connectivity"), 1U},
            {QStringLiteral("ConnectivityCheckAvailable"), false},
            {QStringLiteral("ConnectivityCheckEnabled"), false},
            {QStringLiteral("ConnectivityCheckUri"), QString()},
            {QStringLiteral("GlobalDnsConfiguration"), QVariantMap()}};
}

QVariantMap deviceProperties(const QString &interface, uint type, const QString &address)
{
    return {{QStringLiteral("Udi"), QStringLiteral("/sys/devices/") + interface},
            {QStringLiteral("Path"), QString()},
            {QStringLiteral("Interface"), interface},
            {QStringLiteral("IpInterface"), interface},
            {QStringLiteral("Driver"), QStringLiteral("fake")},
            {QStringLiteral("DriverVersion"), QString()},
            {QStringLiteral("FirmwareVersion"), QString()},
            {QStringLiteral("Capabilities"), 7U},
            {QStringLiteral("State"), Disconnected},
            {QStringLiteral("StateReason"), QVariant::fromValue(StateReason {Disconnected, 0})},
            {QStringLiteral("ActiveConnection"), none()},
            {QStringLiteral("Ip4Config"), none()},
            {QStringLiteral("Dhcp4Config"), none()},
            {QStringLiteral("Ip6Config"), none()},
            {QStringLiteral("Dhcp6Config"), none()},
            {QStringLiteral("Managed"), true},
            {QStringLiteral("Autoconnect"), true},
            {QStringLiteral("FirmwareMissing"), false},
            {QStringLiteral("NmPluginMissing"), false},
            {QStringLiteral("DeviceType"), type},
            {QStringLiteral("AvailableConnections"), noObjects()},
            {QStringLiteral("PhysicalPortId"), QString()},
            {QStringLiteral("Mtu"), 1500U},
            {QStringLiteral("Metered"), 0U},
            {QStringLiteral("LldpNeighbors"), QVariant::fromValue(QList<QVariantMap>())},
            {QStringLiteral("Real"), true},
            {QStringLiteral("Ip4Connectivity"), 1U},
            {QStringLiteral("Ip6Connectivity"), 1U},
            {QStringLiteral("InterfaceFlags"), 0x10003U},
            {QStringLiteral("HwAddress"), address}};
}

QVariantMap ip4Properties(const QStringList &addresses, const QString &gateway, uint metric,
                          const QStringList &nameservers)
{
    QList<QVariantMap> addressData;
    QList<QVariantMap> routes;
    QList<QVariantMap> nameserverData;
    for (const QString &address : addresses) {
        const QPair<QHostAddress, int> subnet = QHostAddress::parseSubnet(address);
        addressData.append({{QStringLiteral("address"), address.section(QLatin1Char('/'), 0, 0)},
                            {QStringLiteral("prefix"), uint(subnet.second)}});
        routes.append({{QStringLiteral("dest"), subnet.first.toString()},
                       {QStringLiteral("prefix"), uint(subnet.second)},
                       {QStringLiteral("metric"), metric}});
    }
    if (!gateway.isEmpty())
        routes.append({{QStringLiteral("dest"), QStringLiteral("0.0.0.0")},
                       {QStringLiteral("prefix"), 0U},
                       {QStringLiteral("next-hop"), gateway},
                       {QStringLiteral("metric"), metric}});
    for (const QString &nameserver : nameservers)
        nameserverData.append({{QStringLiteral("address"), nameserver}});
    return {{QStringLiteral("AddressData"), QVariant::fromValue(addressData)},
            {QStringLiteral("Gateway"), gateway},
            {QStringLiteral("RouteData"), QVariant::fromValue(routes)},
            {QStringLiteral("NameserverData"), QVariant::fromValue(nameserverData)}};
}

} // namespace

Q_DECLARE_METATYPE(StateReason)

FakeManager::FakeManager(const QString &version)
    : BusObjects(Manager, QStringLiteral("/org/freedesktop"))
{
    qDBusRegisterMetaType<StateReason>();
    add(managerPath(), {{Manager, managerProperties(version)}});
    add(settingsPath(),
        {{Manager + QStringLiteral(".Settings"),
          {{QStringLiteral("Connections"), noObjects()},
           {QStringLiteral("Hostname"), QStringLiteral("unit")},
           {QStringLiteral("CanModify"), true}}}});
    add(Folder + AgentManager, {{Manager + QStringLiteral(".AgentManager"), {}}});

    setHandler(QStringLiteral("AddAndActivateConnection"), &FakeManager::addAndActivate);
    setHandler(QStringLiteral("AddAndActivateConnection2"), &FakeManager::addAndActivate);
    setHandler(QStringLiteral("ActivateConnection"), &FakeManager::activateConnection);
    setHandler(QStringLiteral("DeactivateConnection"), &FakeManager::deactivateConnection);
    for (const auto *member : {"AddConnection", "AddConnectionUnsaved", "AddConnection2"})
        setHandler(QLatin1String(member), &FakeManager::addConnection);
    setHandler(QStringLiteral("GetSettings"), &FakeManager::getSettings);
    setHandler(QStringLiteral("GetSecrets"), &FakeManager::getSecrets);
    for (const auto *member : {"Update", "UpdateUnsaved", "Update2"})
        setHandler(QLatin1String(member), &FakeManager::updateProfile);
    setHandler(QStringLiteral("Delete"), &FakeManager::deleteObject);
    setHandler(QStringLiteral("Disconnect"), &FakeManager::disconnectDevice);
    setHandler(QStringLiteral("GetAppliedConnection"), &FakeManager::getAppliedConnection);
    setHandler(QStringLiteral("Reapply"), &FakeManager::reapply);
    setHandler(QStringLiteral("CheckpointCreate"), &FakeManager::createCheckpoint);
    for (const auto *member : {"CheckpointDestroy", "CheckpointRollback"})
        setHandler(QLatin1String(member), &FakeManager::endCheckpoint);
    for (const auto *member : {"GetAccessPoints", "GetAllAccessPoints"})
        setHandler(QLatin1String(member), &FakeManager::getAccessPoints);
    setHandler(QStringLiteral("GetDeviceByIpIface"), &FakeManager::getDevice);
    setHandler(QStringLiteral("GetPermissions"), &FakeManager::getPermissions);
    for (const auto *member : {"RequestScan", "CheckpointAdjustRollbackTimeout", "ClearSecrets", "Save", "Enable",
                               "Sleep", "Register", "RegisterWithCapabilities", "Unregister", "SetLogging", "Reload"})
        setHandler(QLatin1String(member), &FakeManager::nothing);
    connect(this, &BusObjects::senderGone, this, &FakeManager::onSenderGone, Qt::DirectConnection);
}

FakeManager::~FakeManager()
{
    stop(); // while the answers are still whole
}

QString FakeManager::managerPath()
{
    return Folder;
}

QString FakeManager::settingsPath()
{
    return Folder + QStringLiteral("/Settings");
}

QString FakeManager::addEthernet(const QString &interface, const QVariantMap &properties)
{
    return addDevice(interface, 1, QStringLiteral("Wired"),
                     {{QStringLiteral("PermHwAddress"), QString()},
                      {QStringLiteral("Speed"), 1000U},
                      {QStringLiteral("S390Subchannels"), QStringList()},
                      {QStringLiteral("Carrier"), true}},
                     properties);
}

QString FakeManager::addWifi(const QString &interface, const QVariantMap &properties)
{
    return addDevice(interface, 2, QStringLiteral("Wireless"),
                     {{QStringLiteral("PermHwAddress"), QString()},
                      {QStringLiteral("Mode"), 2U},
                      {QStringLiteral("Bitrate"), 0U},
                      {QStringLiteral("AccessPoints"), noObjects()},
                      {QStringLiteral("ActiveAccessPoint"), none()},
                      {QStringLiteral("WirelessCapabilities"), 0x17FFU},
                      {QStringLiteral("LastScan"), qlonglong(-1)}},
                     properties);
}

QString FakeManager::addDevice(const QString &interface, uint type, const QString &kind,
                               const QVariantMap &kindProperties, const QVariantMap &properties)
{
    const QMutexLocker locker(mutex());
    const QString path = next(QStringLiteral("Devices"));
    const QVariant address = properties.value(QStringLiteral("HwAddress"),
                                              QStringLiteral("02:00:00:00:00:%1").arg(m_last, 2, 16, QLatin1Char('0')));
    QVariantMap own = with(kindProperties, properties);
    own.insert(QStringLiteral("HwAddress"), address);
    add(path,
        {{Device, with(deviceProperties(interface, type, address.toString()), properties)},
         {Device + QLatin1Char('.') + kind, own}});
    append(managerPath(), QStringLiteral("Devices"), path);
    append(managerPath(), QStringLiteral("AllDevices"), path);
    emitSignal(managerPath(), Manager, QStringLiteral("DeviceAdded"), {object(path)});
    return path;
}

void FakeManager::removeDevice(const QString &device)
{
    const QMutexLocker locker(mutex());
    endActivation(device);
    for (const QDBusObjectPath &point : value<BusPaths>(device, QStringLiteral("AccessPoints")))
        removeAccessPoint(point.path());
    emitSignal(managerPath(), Manager, QStringLiteral("DeviceRemoved"), {object(device)});
    drop(managerPath(), QStringLiteral("Devices"), device);
    drop(managerPath(), QStringLiteral("AllDevices"), device);
    setLease(device, {});
    setIp4(device, {});
    remove(device);
}

QString FakeManager::device(const QString &interface) const
{
    for (const QDBusObjectPath &path : value<BusPaths>(managerPath(), QStringLiteral("AllDevices"))) {
        if (value(path.path(), QStringLiteral("Interface")) == interface)
            return path.path();
    }
    return {};
}

QString FakeManager::addAccessPoint(const QString &wifi, const QByteArray &ssid, const QVariantMap &properties)
{
    const QMutexLocker locker(mutex());
    const QString path = next(QStringLiteral("AccessPoint"));
    const QVariantMap usual {{QStringLiteral("Flags"), 0U},
                             {QStringLiteral("WpaFlags"), 0U},
                             {QStringLiteral("RsnFlags"), 0U},
                             {QStringLiteral("Ssid"), ssid},
                             {QStringLiteral("Frequency"), 2412U},
                             {QStringLiteral("HwAddress"),
                              QStringLiteral("0A:00:00:00:%1:%2")
                                  .arg(m_last / 256, 2, 16, QLatin1Char('0'))
                                  .arg(m_last % 256, 2, 16, QLatin1Char('0'))
                                  .toUpper()},
                             {QStringLiteral("Mode"), 2U},
                             {QStringLiteral("MaxBitrate"), 54000U},
                             {QStringLiteral("Strength"), QVariant::fromValue(uchar(50))},
                             {QStringLiteral("LastSeen"), int(millisecondsSinceBoot() / 1000)}};
    add(path, {{Manager + QStringLiteral(".AccessPoint"), with(usual, properties)}});
    append(wifi, QStringLiteral("AccessPoints"), path);
    emitSignal(wifi, Device + QStringLiteral(".Wireless"), QStringLiteral("AccessPointAdded"), {object(path)});
    return path;
}

void FakeManager::removeAccessPoint(const QString &accessPoint)
{
    const QMutexLocker locker(mutex());
    for (const QDBusObjectPath &wifi : value<BusPaths>(managerPath(), QStringLiteral("AllDevices"))) {
        if (!value<BusPaths>(wifi.path(), QStringLiteral("AccessPoints")).contains(QDBusObjectPath(accessPoint)))
            continue;
        if (pathValue(wifi.path(), QStringLiteral("ActiveAccessPoint")) == accessPoint)
            change(wifi.path(), {{QStringLiteral("ActiveAccessPoint"), none()}});
        drop(wifi.path(), QStringLiteral("AccessPoints"), accessPoint);
        emitSignal(wifi.path(), Device + QStringLiteral(".Wireless"), QStringLiteral("AccessPointRemoved"),
                   {object(accessPoint)});
    }
    remove(accessPoint);
}

void FakeManager::finishScan(const QString &wifi)
{
    const QMutexLocker locker(mutex());
    const auto before = value<qlonglong>(wifi, QStringLiteral("LastScan"));
    change(wifi, {{QStringLiteral("LastScan"), qMax(before + 1, millisecondsSinceBoot())}});
}

QString FakeManager::addProfile(const BusSettings &settings, uint flags)
{
    const QMutexLocker locker(mutex());
    const QString path = next(QStringLiteral("Settings"));
    BusSettings whole = settings;
    QVariantMap &connection = whole[QStringLiteral("connection")];
    if (!connection.contains(QStringLiteral("uuid")))
        connection.insert(QStringLiteral("uuid"), QUuid::createUuid().toString(QUuid::WithoutBraces));
    if (!connection.contains(QStringLiteral("id")))
        connection.insert(QStringLiteral("id"), path);
    m_profiles.insert(path, whole);
    add(path,
        {{Connection,
          {{QStringLiteral("Unsaved"), (flags & 1) != 0},
           {QStringLiteral("Flags"), flags},
           {QStringLiteral("Filename"), QString()}}}});
    append(settingsPath(), QStringLiteral("Connections"), path);
    emitSignal(settingsPath(), Manager + QStringLiteral(".Settings"), QStringLiteral("NewConnection"), {object(path)});
    return path;
}

void FakeManager::removeProfile(const QString &profile)
{
    const QMutexLocker locker(mutex());
    m_profiles.remove(profile);
    emitSignal(profile, Connection, QStringLiteral("Removed"));
    drop(settingsPath(), QStringLiteral("Connections"), profile);
    remove(profile);
}

BusSettings FakeManager::profile(const QString &profile) const
{
    const QMutexLocker locker(mutex());
    return m_profiles.value(profile);
}

QString FakeManager::beginActivation(const QString &device, const QString &profile, const QString &specificObject)
{
    const QMutexLocker locker(mutex());
    endActivation(device);
    const QString path = next(QStringLiteral("ActiveConnection"));
    const QVariantMap connection = m_profiles.value(profile).value(QStringLiteral("connection"));
    add(path,
        {{Active,
          {{QStringLiteral("Connection"), object(profile)},
           {QStringLiteral("SpecificObject"), object(specificObject)},
           {QStringLiteral("Id"), connection.value(QStringLiteral("id"))},
           {QStringLiteral("Uuid"), connection.value(QStringLiteral("uuid"))},
           {QStringLiteral("Type"), connection.value(QStringLiteral("type"), QString())},
           {QStringLiteral("Devices"), QVariant::fromValue(BusPaths {QDBusObjectPath(device)})},
           {QStringLiteral("State"), 0U},
           {QStringLiteral("StateFlags"), 1U},
           {QStringLiteral("Default"), false},
           {QStringLiteral("Ip4Config"), none()},
           {QStringLiteral("Dhcp4Config"), none()},
           {QStringLiteral("Default6"), false},
           {QStringLiteral("Ip6Config"), none()},
           {QStringLiteral("Dhcp6Config"), none()},
           {QStringLiteral("Vpn"), false},
           {QStringLiteral("Master"), none()}}}});
    append(managerPath(), QStringLiteral("ActiveConnections"), path);
    m_applied.insert(device, {m_profiles.value(profile), 1});
    change(device, {{QStringLiteral("ActiveConnection"), object(path)}});
    const QVariant ssid =
        m_profiles.value(profile).value(QStringLiteral("802-11-wireless")).value(QStringLiteral("ssid"));
    for (const QDBusObjectPath &point : value<BusPaths>(device, QStringLiteral("AccessPoints"))) {
        if (specificObject == slash() ? value(point.path(), QStringLiteral("Ssid")) == ssid
                                      : point.path() == specificObject)
            change(device, {{QStringLiteral("ActiveAccessPoint"), object(point.path())}});
    }
    setState(device, Prepare);
    return path;
}

void FakeManager::activate(const QString &device)
{
    const QMutexLocker locker(mutex());
    for (const uint state : {50U, 60U, 70U, 80U, 90U, Activated}) {
        if (state > value<uint>(device, QStringLiteral("State")))
            setState(device, state);
    }
}

void FakeManager::deactivate(const QString &device, uint reason)
{
    setStates(device, {{Deactivating, reason}, {Disconnected, reason}});
}

void FakeManager::fail(const QString &device, uint reason)
{
    setStates(device, {{Failed, reason}, {Disconnected, 0}});
}

void FakeManager::setStates(const QString &device, const QVector<QPair<uint, uint>> &states)
{
    const QMutexLocker locker(mutex());
    for (const QPair<uint, uint> &state : states)
        setState(device, state.first, state.second);
}

void FakeManager::setState(const QString &device, uint state, uint reason)
{
    const QMutexLocker locker(mutex());
    const uint before = value<uint>(device, QStringLiteral("State"));
    change(device, {{QStringLiteral("State"), state}});
    change(device, {{QStringLiteral("StateReason"), QVariant::fromValue(StateReason {state, reason})}});
    emitSignal(device, Device, QStringLiteral("StateChanged"), {state, before, reason});

    const QString active = pathValue(device, QStringLiteral("ActiveConnection"));
    if (!contains(active))
        return;
    if (state < Prepare || state > Deactivating) {
        endActivation(device);
        return;
    }
    const uint now = state < Activated ? 1 : state == Activated ? 2 : 3;
    if (value<uint>(active, QStringLiteral("State")) == now)
        return;
    emitSignal(active, Active, QStringLiteral("StateChanged"), {now, now == 3 ? 3U : 1U});
    change(active, {{QStringLiteral("State"), now}});
}

void FakeManager::endActivation(const QString &device)
{
    const QString active = pathValue(device, QStringLiteral("ActiveConnection"));
    if (!contains(active))
        return;
    const QString profile = pathValue(active, QStringLiteral("Connection"));
    m_applied.remove(device);
    m_boundTo.remove(active);
    change(device, {{QStringLiteral("ActiveConnection"), none()}, {QStringLiteral("ActiveAccessPoint"), none()}});
    emitSignal(active, Active, QStringLiteral("StateChanged"), {4U, 3U});
    change(active, {{QStringLiteral("State"), 4U}});
    drop(managerPath(), QStringLiteral("ActiveConnections"), active);
    remove(active);
    if (value<uint>(profile, QStringLiteral("Flags")) & Volatile)
        removeProfile(profile);
}

void FakeManager::onSenderGone(const QString &sender)
{
    const QMutexLocker locker(mutex());
    for (const QString &active : m_boundTo.keys(sender)) {
        for (const QDBusObjectPath &device : value<BusPaths>(active, QStringLiteral("Devices")))
            deactivate(device.path(), 38);
    }
}

void FakeManager::setIp4(const QString &device, const QStringList &addresses, const QString &gateway, uint metric,
                         const QStringList &nameservers)
{
    const QMutexLocker locker(mutex());
    const QString active = pathValue(device, QStringLiteral("ActiveConnection"));
    QString path = pathValue(device, QStringLiteral("Ip4Config"));
    const QVariantMap properties = ip4Properties(addresses, gateway, metric, nameservers);
    if (contains(active))
        change(active, {{QStringLiteral("Default"), !gateway.isEmpty()}});
    if (contains(path) && !addresses.isEmpty()) {
        change(path, properties);
        return;
    }
    const QString before = path;
    path = addresses.isEmpty() ? slash() : next(QStringLiteral("IP4Config"));
    if (!addresses.isEmpty()) {
        QVariantMap all = properties;
        for (const auto *name : {"Domains", "Searches", "DnsOptions", "WinsServerData"})
            all.insert(QLatin1String(name), QStringList());
        all.insert(QStringLiteral("DnsPriority"), 100);
        add(path, {{Manager + QStringLiteral(".IP4Config"), all}});
    }
    change(device, {{QStringLiteral("Ip4Config"), object(path)}});
    if (contains(active))
        change(active, {{QStringLiteral("Ip4Config"), object(path)}});
    if (contains(before))
        remove(before);
}

void FakeManager::setLease(const QString &device, const QVariantMap &options)
{
    const QMutexLocker locker(mutex());
    const QString before = pathValue(device, QStringLiteral("Dhcp4Config"));
    QString path = slash();
    if (!options.isEmpty()) {
        path = next(QStringLiteral("DHCP4Config"));
        add(path, {{Manager + QStringLiteral(".DHCP4Config"), {{QStringLiteral("Options"), options}}}});
    }
    const QString active = pathValue(device, QStringLiteral("ActiveConnection"));
    change(device, {{QStringLiteral("Dhcp4Config"), object(path)}});
    if (contains(active))
        change(active, {{QStringLiteral("Dhcp4Config"), object(path)}});
    if (contains(before))
        remove(before);
}

BusSettings FakeManager::applied(const QString &device) const
{
    const QMutexLocker locker(mutex());
    return m_applied.value(device).settings;
}

QString FakeManager::next(const QString &folder)
{
    return QStringLiteral("%1/%2/%3").arg(Folder, folder).arg(++m_last);
}

void FakeManager::append(const QString &path, const QString &list, const QString &item)
{
    change(path, {{list, QVariant::fromValue(value<BusPaths>(path, list) << QDBusObjectPath(item))}});
}

void FakeManager::drop(const QString &path, const QString &list, const QString &item)
{
    auto items = value<BusPaths>(path, list);
    items.removeAll(QDBusObjectPath(item));
    change(path, {{list, QVariant::fromValue(items)}});
}

void FakeManager::setHandler(const QString &member, Handler handler)
{
    setAnswer(member, [this, handler](const BusCall &call) { return (this->*handler)(call); });
}

BusAnswer FakeManager::addAndActivate(const BusCall &call)
{
    const QVariantMap options = call.map(3);
    const bool isVolatile = options.value(QStringLiteral("persist")) == QLatin1String("volatile");
    const bool inMemory = isVolatile || options.value(QStringLiteral("persist")) == QLatin1String("memory");
    const QString profile = addProfile(call.settings(0), (inMemory ? 0x1U : 0U) | (isVolatile ? Volatile : 0U));
    const QString active = beginActivation(call.pathAt(1), profile, call.pathAt(2));
    if (options.value(QStringLiteral("bind-activation")) == QLatin1String("dbus-client"))
        m_boundTo.insert(active, call.sender);
    BusAnswer answer {{object(profile), object(active)}, {}, {}};
    if (call.member.endsWith(QLatin1Char('2')))
        answer.values.append(QVariantMap());
    return answer;
}

BusAnswer FakeManager::activateConnection(const BusCall &call)
{
    return {{object(beginActivation(call.pathAt(1), call.pathAt(0), call.pathAt(2)))}, {}, {}};
}

BusAnswer FakeManager::deactivateConnection(const BusCall &call)
{
    if (!contains(call.pathAt(0)))
        return {{}, Manager + QStringLiteral(".ConnectionNotActive"), QStringLiteral("The connection was not active.")};
    for (const QDBusObjectPath &device : value<BusPaths>(call.pathAt(0), QStringLiteral("Devices")))
        deactivate(device.path());
    return {};
}

BusAnswer FakeManager::addConnection(const BusCall &call)
{
    BusAnswer answer {
        {object(addProfile(call.settings(0), call.member == QLatin1String("AddConnectionUnsaved") ? 1 : 0))}, {}, {}};
    if (call.member.endsWith(QLatin1Char('2')))
        answer.values.append(QVariantMap());
    return answer;
}

BusAnswer FakeManager::getSettings(const BusCall &call)
{
    BusSettings settings = m_profiles.value(call.path);
    settings[QStringLiteral("802-11-wireless-security")].remove(QStringLiteral("psk"));
    if (settings.value(QStringLiteral("802-11-wireless-security")).isEmpty())
        settings.remove(QStringLiteral("802-11-wireless-security"));
    return {{QVariant::fromValue(settings)}, {}, {}};
}

BusAnswer FakeManager::getSecrets(const BusCall &call)
{
    const QVariantMap group = m_profiles.value(call.path).value(call.text(0));
    QVariantMap secrets;
    if (group.contains(QStringLiteral("psk")))
        secrets.insert(QStringLiteral("psk"), group.value(QStringLiteral("psk")));
    return {{QVariant::fromValue(BusSettings {{call.text(0), secrets}})}, {}, {}};
}

BusAnswer FakeManager::updateProfile(const BusCall &call)
{
    m_profiles.insert(call.path, call.settings(0));
    emitSignal(call.path, Connection, QStringLiteral("Updated"));
    if (call.member.endsWith(QLatin1Char('2')))
        return {{QVariantMap()}, {}, {}};
    return {};
}

BusAnswer FakeManager::deleteObject(const BusCall &call)
{
    if (m_profiles.contains(call.path))
        removeProfile(call.path);
    else
        removeDevice(call.path);
    return {};
}

BusAnswer FakeManager::disconnectDevice(const BusCall &call)
{
    if (!contains(pathValue(call.path, QStringLiteral("ActiveConnection"))))
        return {{}, Device + QStringLiteral(".NotActive"), QStringLiteral("This device is not active")};
    change(call.path, {{QStringLiteral("Autoconnect"), false}});
    deactivate(call.path);
    return {};
}

BusAnswer FakeManager::getAppliedConnection(const BusCall &call)
{
    if (!m_applied.contains(call.path))
        return {{}, Device + QStringLiteral(".NotActive"), QStringLiteral("This device is not active")};
    const Applied &applied = m_applied[call.path];
    return {{QVariant::fromValue(applied.settings), applied.version}, {}, {}};
}

BusAnswer FakeManager::reapply(const BusCall &call)
{
    if (!m_applied.contains(call.path))
        return {{}, Device + QStringLiteral(".NotActive"), QStringLiteral("Device is not activated")};
    Applied &applied = m_applied[call.path];
    const auto version = qvariant_cast<qulonglong>(call.arguments.value(1));
    if (version != 0 && version != applied.version)
        return {{},
                Device + QStringLiteral(".VersionIdMismatch"),
                QStringLiteral("Reapply failed because device changed in the meantime and the version-id mismatches")};
    // Nothing: back to the profile
    applied.settings = call.settings(0).isEmpty() ? m_profiles.value(pathValue(
                           pathValue(call.path, QStringLiteral("ActiveConnection")), QStringLiteral("Connection")))
                                                  : call.settings(0);
    ++applied.version;
    return {};
}

BusAnswer FakeManager::createCheckpoint(const BusCall &call)
{
    const QString path = next(QStringLiteral("Checkpoint"));
    add(path,
        {{Manager + QStringLiteral(".Checkpoint"),
          {{QStringLiteral("Devices"), call.arguments.value(0)},
           {QStringLiteral("Created"), millisecondsSinceBoot()},
           {QStringLiteral("RollbackTimeout"), call.arguments.value(1)}}}});
    append(managerPath(), QStringLiteral("Checkpoints"), path);
    return {{object(path)}, {}, {}};
}

BusAnswer FakeManager::endCheckpoint(const BusCall &call)
{
    drop(managerPath(), QStringLiteral("Checkpoints"), call.pathAt(0));
    remove(call.pathAt(0));
    if (call.member == QLatin1String("CheckpointRollback"))
        return {{QVariant::fromValue(QMap<QString, uint>())}, {}, {}};
    return {};
}

BusAnswer FakeManager::getAccessPoints(const BusCall &call)
{
    return {{value(call.path, QStringLiteral("AccessPoints"))}, {}, {}};
}

BusAnswer FakeManager::getDevice(const BusCall &call)
{
    const QString path = device(call.text(0));
    if (path.isEmpty())
        return {
            {}, Manager + QStringLiteral(".UnknownDevice"), QStringLiteral("No device found for the requested iface.")};
    return {{object(path)}, {}, {}};
}

BusAnswer FakeManager::getPermissions(const BusCall &)
{
    QMap<QString, QString> permissions;
    for (const auto *name : {"checkpoint-rollback", "enable-disable-network", "enable-disable-wifi", "network-control",
                             "settings.modify.own", "settings.modify.system", "sleep-wake", "wifi.scan",
                             "wifi.share.open", "wifi.share.protected"})
        permissions.insert(Manager + QLatin1Char('.') + QLatin1String(name), QStringLiteral("yes"));
    return {{QVariant::fromValue(permissions)}, {}, {}};
}

BusAnswer FakeManager::nothing(const BusCall &)
{
    return {};
}
