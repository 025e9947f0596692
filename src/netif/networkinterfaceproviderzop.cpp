// SPDX-License-Identifier: Apache-2.0
#include "networkinterfaceproviderzop_p.h"

#include "asyncnetworkinterfaceoperation.h"
#include "jsontext_p.h"
#include "networklog_p.h"
#include "zopaccess_p.h"
#include "zopcontrolcommand.h"
#include "zopdirwatcher.h"
#include "zopinterfaceconnection_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QScopeGuard>

#include <algorithm>
#include <memory>

namespace morvek {

namespace {

const QLatin1String InterfacesPath("/zop/services/networking/all/interfaces");
const QLatin1String StatusPath("/zop/services/networking/all/status_public");
const QLatin1String ControlPath("/zop/services/networking/control");

const QLatin1String DefaultInterfaceAttribute("default_interface");
const QLatin1String PriorityAttribute("priority");

const QLatin1String ConnectMessage("net_connected");
const QLatin1String DisconnectMessage("net_disconnected");

constexpr int RefusedCode = -1;
const QLatin1String DaemonRefusedReason("The system was unable to configure the interface.");

const char InitSignature[] = "bool morvek::NetworkInterfaceProviderZop::init()";
const char ConfigureSignature[] =
    "virtual void morvek::NetworkInterfaceProviderZop::configure(morvek::AsyncNetworkInterfaceOperation*, const "
    "morvek::NetworkInterface&, const morvek::NetworkInterfaceConfig&)";
const char ConnectSignature[] =
    "int morvek::NetworkInterfaceProviderZop::connectInterface(morvek::NetworkInterfaceProviderZop::"
    "ZopInterfaceConnection*, const morvek::NetworkInterfaceConfig&)";
const char DisconnectSignature[] =
    "int morvek::NetworkInterfaceProviderZop::disconnectInterface(morvek::NetworkInterfaceProviderZop::"
    "ZopInterfaceConnection*)";

const char WatcherFailedText[] = "Error creating ZOP dirwatcher \"";
const char ObjectFailedText[] = "Error creating ZOP object \"";
const char ReadyText[] = "Service is ready? : ";
const char InitFailedText[] = "NetworkInterfaceProviderZop was not initialized successfully";
const char UnreadableInterfaceText[] = "Unable to read ZOP network interface object \"";
const char ParentInterfaceText[] = "Interface \"";
const char ParentNameText[] = "\" has a parent interface \"";
const char UnknownParentText[] = "\" which is not in our list of known interfaces.Cannot setup parent relationship.";
const char PreferredText[] = "Preferred network interface changed to \"";
const char UnknownPreferredText[] = "\" which is not in the list of known interfaces.";
const char PassedInText[] = "Passed in: ";
const char UnknownIdText[] = "The ZOP networking control sent a message with an id we don't know about.";
const char CommandFailedText[] = "The command to ";
const char ErrorCodeText[] = " failed with error(";
const char ErrorText[] = "):";

/*! Why a request cannot be sent at all: what is logged, and what the operation tells. */
struct Refusal
{
    const char *line;
    QLatin1String reason;
};

const QLatin1String
    SameConfigurationReason("The new configuration settings are the same as the current configuration settings.");

const Refusal UnknownInterface {
    "Passed in a NetworkInterface to configure() that is not in the list of known interfaces.",
    QLatin1String("The interface to configure is not in the list of known interfaces."),
};
const Refusal AlreadyAuto {
    "Trying to configure an interface to type=auto (DHCP) that's already using DHCP configuration.",
    SameConfigurationReason,
};
const Refusal SameConfiguration {
    "Trying to configure an interface with its current configuration.",
    SameConfigurationReason,
};
const Refusal Incomplete {
    "The configuration data is incomplete and the interface cannot be configured.",
    QLatin1String("For manual configuration, the new configuration settings must specify an IP "
                  "address, a netmask address and a gateway address."),
};

QString interfacePath(const QString &name)
{
    return InterfacesPath + QLatin1Char('/') + name;
}

ZopObject *openObject(const QString &path, ZopObject::PublicationMode mode, bool flag, QObject *parent)
{
    auto object = std::make_unique<ZopObject>(path, mode, flag, parent);
    if (object->isValid())
        return object.release();
    NetworkLog::debug1(ObjectFailedText, path, "\"");
    return nullptr;
}

bool isComplete(const NetworkInterfaceConfig &config)
{
    const QList<QNetworkAddressEntry> addresses = config.ipAddresses();
    const QList<QHostAddress> gateways = config.gatewayAddresses();
    return !addresses.isEmpty() && !addresses.first().ip().isNull() && !addresses.first().netmask().isNull()
        && !gateways.isEmpty() && !gateways.first().isNull();
}

/*! Null when \a config can be sent for \a networkInterface: what the caller holds counts, not what is known here. */
const Refusal *refusal(const NetworkInterface &networkInterface, const NetworkInterfaceConfig &config)
{
    const NetworkInterfaceConfig current = networkInterface.configuration();
    if (current.type() == NetworkInterfaceConfig::Auto && config.type() == NetworkInterfaceConfig::Auto)
        return &AlreadyAuto;
    if (current == config)
        return &SameConfiguration;
    if (config.type() == NetworkInterfaceConfig::Manual && !isComplete(config))
        return &Incomplete;
    return nullptr;
}

void appendAddress(QString *json, QLatin1String key, const QHostAddress &address)
{
    if (address.isNull())
        return;
    *json += key;
    appendJsonString(address.toString(), json);
    *json += QLatin1Char(',');
}

/*!
 * The payload of "net_connected", its settings in the order of their names. Through Qt's JSON classes it would take
 * more than half of a request's time.
 */
QString connectPayload(const QString &name, const NetworkInterfaceConfig &config)
{
    QString json;
    json.reserve(160); // enough for most
    json += QLatin1Char('[');
    appendJsonString(name, &json);
    json += QLatin1String(",{");
    QHostAddress netmask;
    if (config.type() == NetworkInterfaceConfig::Manual) {
        const QNetworkAddressEntry address = config.ipAddresses().value(0);
        netmask = address.netmask();
        appendAddress(&json, QLatin1String("\"gateway\":"), config.gatewayAddresses().value(0));
        appendAddress(&json, QLatin1String("\"ip_address\":"), address.ip());
        json += QLatin1String("\"manual\":\"yes\",");
    } else if (config.type() == NetworkInterfaceConfig::Auto) {
        json += QLatin1String("\"manual\":\"no\",");
    }
    json += QLatin1String("\"manual6\":\"off\",");
    appendAddress(&json, QLatin1String("\"netmask\":"), netmask);
    json.chop(1); // the last comma
    json += QLatin1String("}]");
    return json;
}

} // namespace

NetworkInterfaceProviderZop::NetworkInterfaceProviderZop()
{
    init();
}

NetworkInterfaceProviderZop::~NetworkInterfaceProviderZop() = default;

bool NetworkInterfaceProviderZop::init()
{
    NetworkLog::debug1(InitSignature);
    const bool opened = openInterfacesWatcher() && openStatusObject() && openControlObject();
    setReady(opened);
    NetworkLog::debug1(ReadyText, opened ? "true" : "false");
    if (!opened)
        NetworkLog::printWarning(InitFailedText);
    return opened;
}

// Connected before the name cache is filled, so that the interfaces are known when this returns.
bool NetworkInterfaceProviderZop::openInterfacesWatcher()
{
    if (interfacesWatcher)
        return true;
    auto watcher = std::make_unique<ZopDirWatcher>(InterfacesPath, this);
    if (!watcher->isValid()) {
        NetworkLog::debug1(WatcherFailedText, InterfacesPath, "\"");
        return false;
    }
    interfacesWatcher = watcher.release();
    connect(interfacesWatcher, &ZopDirWatcher::objectAdded, this,
            &NetworkInterfaceProviderZop::onZopNetworkingInterfaceAdded);
    connect(interfacesWatcher, &ZopDirWatcher::objectRemoved, this,
            &NetworkInterfaceProviderZop::onZopNetworkingInterfaceRemoved);
    interfacesWatcher->setNameCacheEnabled(true);
    return true;
}

// Connected before the attribute cache is filled, so that the present values are told like any later ones.
bool NetworkInterfaceProviderZop::openStatusObject()
{
    if (statusObject)
        return true;
    statusObject = openObject(StatusPath, ReadOnly, false, this);
    if (!statusObject)
        return false;
    connect(statusObject, &ZopObject::attributeChanged, this,
            &NetworkInterfaceProviderZop::onZopNetworkingStatusPublicAttributeChanged);
    statusObject->setAttributeCacheEnabled(true);
    return true;
}

bool NetworkInterfaceProviderZop::openControlObject()
{
    if (!controlObject)
        controlObject = openObject(ControlPath, ReadWrite, true, this);
    return controlObject;
}

QList<NetworkInterfaceData> NetworkInterfaceProviderZop::interfaces() const
{
    QList<NetworkInterfaceData> records;
    for (const ZopInterfaceConnection *connection : interfaceConnections)
        records.append(*connection->interfaceData);
    return records;
}

NetworkInterfaceData NetworkInterfaceProviderZop::preferredInterface() const
{
    return preferredConnection ? *preferredConnection->interfaceData : NetworkInterfaceData();
}

void NetworkInterfaceProviderZop::onZopNetworkingInterfaceAdded(const QString &name)
{
    const QString path = interfacePath(name);
    auto made = std::make_unique<ZopInterfaceConnection>(this);
    ZopInterfaceConnection *connection = made.get();
    auto *object = new ZopObject(path, ReadOnly, false, connection);
    if (!object->isValid()) {
        NetworkLog::debug1(UnreadableInterfaceText, path, "\"");
        return;
    }
    object->setAttributeCacheEnabled(true);
    connection->setZopInterface(name, object);
    connect(object, &ZopObject::attributesChanged, connection,
            &ZopInterfaceConnection::onZopInterfaceAttributesChanged);
    connect(connection, &ZopInterfaceConnection::interfaceAttributesChanged, this,
            &NetworkInterfaceProvider::interfaceConfigurationChanged);
    connect(connection, &ZopInterfaceConnection::interfaceConnected, this,
            &NetworkInterfaceProvider::interfaceConnected);
    connect(connection, &ZopInterfaceConnection::interfaceDisconnected, this,
            &NetworkInterfaceProvider::interfaceDisconnected);
    connect(connection, &ZopInterfaceConnection::interfaceParentChanged, this,
            &NetworkInterfaceProviderZop::updateParentInterfaces);
    // A name that is announced again leaves its earlier connection to the end of the interface, but nothing else.
    if (ZopInterfaceConnection *earlier = interfaceConnections.value(name)) {
        m_supersededConnections.insert(name, earlier);
        m_virtualConnections.remove(earlier->linkedParent, earlier);
        if (preferredConnection == earlier)
            preferredConnection = connection;
    }
    interfaceConnections.insert(name, made.release());
    if (connection->interfaceData->isVirtual)
        linkNamedParent(connection);
    linkChildren(name);
    emit interfaceAdded(*connection->interfaceData);
}

// A slot may delete this provider, and the connections with it.
void NetworkInterfaceProviderZop::onZopNetworkingInterfaceRemoved(const QString &name)
{
    ZopInterfaceConnection *known = interfaceConnections.take(name);
    if (!known)
        return;
    QList<QPointer<ZopInterfaceConnection>> ended {known};
    const QList<ZopInterfaceConnection *> superseded = m_supersededConnections.values(name);
    for (ZopInterfaceConnection *connection : superseded)
        ended.append(connection);
    m_supersededConnections.remove(name);
    if (preferredConnection == known)
        preferredConnection = nullptr;
    m_virtualConnections.remove(known->linkedParent, known);
    linkChildren(name);
    emit interfaceRemoved(*known->interfaceData);
    for (const QPointer<ZopInterfaceConnection> &connection : qAsConst(ended)) {
        if (connection)
            endConnection(connection);
    }
}

void NetworkInterfaceProviderZop::updateParentInterfaces()
{
    m_virtualConnections.clear();
    m_parentNamesChanged = false;
    for (ZopInterfaceConnection *connection : qAsConst(interfaceConnections)) {
        NetworkInterfaceData &record = *connection->interfaceData;
        if (!record.isVirtual)
            continue;
        linkNamedParent(connection);
        if (!record.parent)
            NetworkLog::debug1(ParentInterfaceText, record.name, ParentNameText, connection->linkedParent,
                               UnknownParentText);
    }
}

/*!
 * Does what updateParentInterfaces() does after the interface \a name has come or gone. Only a walk that logs, or has
 * names to read anew, looks at all interfaces: thousands may come one after the other.
 */
void NetworkInterfaceProviderZop::linkChildren(const QString &name)
{
    if (m_parentNamesChanged || NetworkLog::writesDebug1()) {
        updateParentInterfaces();
        return;
    }
    const QList<ZopInterfaceConnection *> children = m_virtualConnections.values(name);
    for (ZopInterfaceConnection *child : children)
        linkParent(child);
}

void NetworkInterfaceProviderZop::linkNamedParent(ZopInterfaceConnection *connection)
{
    connection->linkedParent = connection->parentInterface();
    m_virtualConnections.insert(connection->linkedParent, connection);
    linkParent(connection);
}

void NetworkInterfaceProviderZop::linkParent(ZopInterfaceConnection *connection)
{
    const ZopInterfaceConnection *parent = interfaceConnections.value(connection->linkedParent);
    connection->interfaceData->parent = parent ? parent->interfaceData.get() : nullptr;
}

void NetworkInterfaceProviderZop::onZopNetworkingStatusPublicAttributeChanged(const QString &name,
                                                                              const ZopVariant &value)
{
    if (name == DefaultInterfaceAttribute)
        setPreferredInterface(value.toString());
    else if (name == PriorityAttribute)
        setPriorities(value.toJson(nullptr).array());
}

// An empty name is the daemon's way to say that no interface is preferred.
void NetworkInterfaceProviderZop::setPreferredInterface(const QString &name)
{
    preferredConnection = interfaceConnections.value(name);
    if (!preferredConnection && !name.isEmpty())
        NetworkLog::printWarning(PreferredText, name, UnknownPreferredText);
    emit preferredInterfaceChanged(preferredInterface());
}

// A slot may delete this provider.
void NetworkInterfaceProviderZop::setPriorities(const QJsonArray &names)
{
    const QPointer<NetworkInterfaceProviderZop> self(this);
    for (int i = 0; self && i < names.size(); ++i) {
        ZopInterfaceConnection *connection = interfaceConnections.value(names.at(i).toString());
        if (!connection)
            continue;
        connection->interfaceData->priority = i + 1;
        emit interfaceConfigurationChanged(NetworkInterfaceData(*connection->interfaceData));
    }
}

void NetworkInterfaceProviderZop::configure(AsyncNetworkInterfaceOperation *operation,
                                            const NetworkInterface &networkInterface,
                                            const NetworkInterfaceConfig &config)
{
    NetworkLog::debug1(ConfigureSignature, " (", networkInterface, ", ", config, ")");
    ZopInterfaceConnection *connection = interfaceConnections.value(networkInterface.name());
    if (const Refusal *refused = connection ? refusal(networkInterface, config) : &UnknownInterface) {
        NetworkLog::debug1(refused->line);
        if (refused == &Incomplete)
            NetworkLog::debug1(PassedInText, config);
        fail(operation, RefusedCode, refused->reason);
        return;
    }
    const NetZopRequest request {0, connection, operation, config, {}};
    if (connection->interfaceData->connected)
        sendDisconnect(request);
    else
        sendConnect(request);
}

/*! Keeps \a request under the identifier that \a send returns. Its place comes first: what is sent is never lost. */
template<typename Send>
int NetworkInterfaceProviderZop::keepRequest(const NetZopRequest &request, Send send)
{
    PendingRequests place;
    place.emplace(0, request);
    auto kept = place.extract(place.begin());
    const int id = send();
    kept.key() = id;
    kept.mapped().id = id;
    pendingRequests.erase(id);
    pendingRequests.insert(std::move(kept));
    return id;
}

void NetworkInterfaceProviderZop::sendConnect(const NetZopRequest &request)
{
    keepRequest(request, [&] { return connectInterface(request.connection, request.config); });
}

// The new configuration follows when the daemon reports that the old addresses are gone, whatever it has replied.
void NetworkInterfaceProviderZop::sendDisconnect(const NetZopRequest &request)
{
    const auto release = m_awaitedReleases.insert(m_awaitedReleases.end(), AwaitedRelease {request});
    auto drop = qScopeGuard([this, release] { dropRelease(release); });
    release->handler = connect(request.connection, &ZopInterfaceConnection::interfaceAttributesChanged, this,
                               [this, release](const NetworkInterfaceData &data) {
                                   if (data.configuration.ipAddresses().isEmpty())
                                       finishRelease(release);
                               });
    release->request.id = keepRequest(request, [&] { return disconnectInterface(request.connection); });
    drop.dismiss();
}

void NetworkInterfaceProviderZop::finishRelease(AwaitedReleases::iterator release)
{
    const NetZopRequest request = release->request;
    dropRelease(release);
    sendConnect(request);
}

void NetworkInterfaceProviderZop::dropRelease(AwaitedReleases::iterator release)
{
    disconnect(release->handler);
    m_awaitedReleases.erase(release);
}

int NetworkInterfaceProviderZop::connectInterface(ZopInterfaceConnection *connection,
                                                  const NetworkInterfaceConfig &config)
{
    const QString name = connection->interfaceData->name;
    NetworkLog::debug1(ConnectSignature, " (", name, ", ", config, ")");
    const auto *command = startCommand(controlObject, ConnectMessage, connectPayload(name, config), this,
                                       &NetworkInterfaceProviderZop::onControlCommandConnectFinished);
    return command->id().toInt();
}

int NetworkInterfaceProviderZop::disconnectInterface(ZopInterfaceConnection *connection)
{
    const QString name = connection->interfaceData->name;
    NetworkLog::debug1(DisconnectSignature, " (", name, ")");
    const QString text = QLatin1Char('"') + name + QLatin1Char('"');
    const auto *command = startCommand(controlObject, DisconnectMessage, text, this,
                                       &NetworkInterfaceProviderZop::onControlCommandConfigureDisconnectFinished);
    return command->id().toInt();
}

void NetworkInterfaceProviderZop::onControlCommandConnectFinished(ZopControlCommand *command)
{
    NetZopRequest request;
    if (!takeRequest(command, &request))
        return;
    if (command->hasError())
        failRequest(command, request);
    else if (request.operation)
        emit asyncConfigureSuccess(request.operation,
                                   request.connection ? NetworkInterfaceData(*request.connection->interfaceData)
                                                      : request.lastKnownData);
}

void NetworkInterfaceProviderZop::onControlCommandConfigureDisconnectFinished(ZopControlCommand *command)
{
    NetZopRequest request;
    if (!takeRequest(command, &request))
        return;
    const bool vanished = answerRelease(request.id, command->hasError());
    if (command->hasError())
        failRequest(command, request);
    else if (vanished)
        fail(request.operation, RefusedCode, UnknownInterface.reason);
}

bool NetworkInterfaceProviderZop::takeRequest(const ZopControlCommand *command, NetZopRequest *request)
{
    const auto pending = pendingRequests.find(command->id().toInt());
    if (pending == pendingRequests.end()) {
        NetworkLog::debug1(UnknownIdText);
        return false;
    }
    *request = pending->second;
    pendingRequests.erase(pending);
    return true;
}

// The daemon's own code goes to the application.
void NetworkInterfaceProviderZop::failRequest(const ZopControlCommand *command, const NetZopRequest &request)
{
    const QString error = command->errorString();
    NetworkLog::debug1(
        CommandFailedText, [command] { return command->message(); }, ErrorCodeText,
        [command] { return command->errorCode(); }, ErrorText, error);
    const QString detail = error.isEmpty() ? QString() : QLatin1String(" (") + error + QLatin1Char(')');
    fail(request.operation, command->errorCode(), DaemonRefusedReason + detail);
}

void NetworkInterfaceProviderZop::fail(AsyncNetworkInterfaceOperation *operation, int code, const QString &message)
{
    if (operation)
        emit asyncConfigureFailure(operation, code, message);
}

/*!
 * Notes the reply to the "net_disconnected" with \a id. True when it is the end of its request, because the
 * interface has vanished before it lost its addresses.
 */
bool NetworkInterfaceProviderZop::answerRelease(int id, bool refused)
{
    const auto release =
        std::find_if(m_awaitedReleases.begin(), m_awaitedReleases.end(), [id](const AwaitedRelease &awaited) {
            return awaited.request.id == id && awaited.answer == AwaitedRelease::Unanswered;
        });
    if (release == m_awaitedReleases.end())
        return false;
    // A refusal ends the operation, and yet the new configuration still follows the loss of the addresses.
    release->answer = refused ? AwaitedRelease::Refused : AwaitedRelease::Accepted;
    if (release->request.connection)
        return false;
    m_awaitedReleases.erase(release);
    return true;
}

/*! Deletes \a connection, and ends what would wait for it for ever. Commands in flight end with their replies. */
void NetworkInterfaceProviderZop::endConnection(ZopInterfaceConnection *connection)
{
    QList<QPointer<AsyncNetworkInterfaceOperation>> stranded;
    for (auto release = m_awaitedReleases.begin(); release != m_awaitedReleases.end();) {
        const auto current = release++;
        if (current->request.connection != connection)
            continue;
        if (current->answer == AwaitedRelease::Unanswered) {
            current->request.connection = nullptr;
            continue;
        }
        if (current->answer == AwaitedRelease::Accepted)
            stranded.append(current->request.operation);
        m_awaitedReleases.erase(current);
    }
    for (auto &[id, request] : pendingRequests) {
        if (request.connection == connection) {
            request.connection = nullptr;
            request.lastKnownData = *connection->interfaceData;
        }
    }
    delete connection;
    const QPointer<NetworkInterfaceProviderZop> self(this);
    for (const QPointer<AsyncNetworkInterfaceOperation> &operation : qAsConst(stranded)) {
        if (self)
            fail(operation, RefusedCode, UnknownInterface.reason);
    }
}

} // namespace morvek
