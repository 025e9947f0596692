// SPDX-License-Identifier: Apache-2.0
#include "hotspotproviderzop_p.h"

#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "asyncoperationwriter_p.h"
#include "networklog_p.h"
#include "zopaccess_p.h"
#include "zopcontrolmessage.h"
#include "zopdirwatcher.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QScopeGuard>

namespace morvek {

namespace {

const QLatin1String DaemonPath("/zop/services/tethering/");
const QLatin1String ControlName("control");
const QLatin1String StatusName("status");

const QLatin1String StateAttribute("state");
const QLatin1String Active("ACTIVE");
const QLatin1String Inactive("INACTIVE");

const QLatin1String FetchMessage("retrieve_profile");
const QLatin1String UpdateMessage("update_profile");
const QLatin1String StartMessage("start");
const QLatin1String StopMessage("stop");

const QLatin1String MessageAttribute("msg");
const QLatin1String ReplyAttribute("res");
const QLatin1String IdAttribute("id");
const QLatin1String PayloadAttribute("dat");
const QLatin1String ErrorAttribute("err");
const QLatin1String ErrorTextAttribute("errmsg");

const QLatin1String NoError("0");
const char JsonEncoding[] = "json";

const QLatin1String Type("type");
const QLatin1String LanType("lan");
const QLatin1String AccessPointType("wlanap");
const QLatin1String HotspotKey("lanprofile");

const QLatin1String WriteFailedReason("Unable to write to vantor zop");
const QLatin1String FetchFailedReason("Failed to retrieve WifiHotspot config.");
const QLatin1String NoProfileReason("Empty or malformatted config.");
const QLatin1String UpdateFailedReason("Failed to update WifiHotspot config.");
const QLatin1String StartFailedReason("Failed to enable config.");
const QLatin1String StopFailedReason("Failed to disable config.");

const char ConstructorSignature[] = "morvek::HotspotProviderZop::HotspotProviderZop()";

const char WatcherFailedText[] = "Attempted to initialize ZopDirWatcher";
const char WatcherErrorText[] = " but failed due to ";
const char ObjectFailedText[] = "Could not open ZOP object:";
const char UnknownIdText[] = "No operation for message with id:";
const char EmptyProfileText[] = "Attempt to serialize WifiHotspot profile, but WifiHotspot profile is empty.";

ZopControlMessage controlMessage(const ZopChangeset &changes)
{
    ZopControlMessage message;
    for (auto it = changes.assignments.cbegin(); it != changes.assignments.cend(); ++it) {
        if (it.key() == MessageAttribute)
            message.msg = it->toString();
        else if (it.key() == ReplyAttribute)
            message.res = it->toString();
        else if (it.key() == IdAttribute)
            message.id = it->toInt(nullptr);
        else if (it.key() == PayloadAttribute)
            message.dat = *it;
        else if (it.key() == ErrorAttribute)
            message.err = it->toString();
        else if (it.key() == ErrorTextAttribute)
            message.errmsg = it->toString();
    }
    return message;
}

bool isAccepted(const ZopControlMessage &reply)
{
    return reply.errmsg.isEmpty() && reply.err == NoError;
}

/*! Ends \a operation well: with \a value when it is a \a Fitting one, with nothing when it is an \a Other one. */
template<typename Fitting, typename Other, typename T>
void succeed(AsyncOperationBase *operation, const T &value)
{
    if (auto *fitting = qobject_cast<Fitting *>(operation))
        AsyncOperationWriter::setResult(*fitting, value);
    else if (auto *other = qobject_cast<Other *>(operation))
        AsyncOperationWriter::setResults(*other, {});
}

void succeed(AsyncOperationBase *operation, const WifiHotspot &profile)
{
    succeed<AsyncHotspotConfigOperation, AsyncHotspotEnableOperation>(operation, profile);
}

void succeed(AsyncOperationBase *operation, bool enabled)
{
    succeed<AsyncHotspotEnableOperation, AsyncHotspotConfigOperation>(operation, enabled);
}

void fail(AsyncOperationBase *operation, const QString &message)
{
    if (auto *config = qobject_cast<AsyncHotspotConfigOperation *>(operation))
        AsyncOperationWriter::setError(*config, message);
    else if (auto *enable = qobject_cast<AsyncHotspotEnableOperation *>(operation))
        AsyncOperationWriter::setError(*enable, message);
}

/*! The same with a warning, which ends with \a detail. */
void refuse(AsyncOperationBase *operation, const QString &message, const QString &detail = QString())
{
    fail(operation, message);
    NetworkLog::printWarning(message, detail);
}

} // namespace

int HotspotProviderZop::m_idSequence = 0;
QMap<HotspotProviderZop::HotspotConfigFields, QString> HotspotProviderZop::s_hotspotConfigFieldsMap;
QMap<WifiBand, QString> HotspotProviderZop::s_hotspotBandMap;
QMap<QFlags<WifiSecurityProtocol>, QString> HotspotProviderZop::s_hotspotProtocolMap;

HotspotProviderZop::HotspotProviderZop()
    : m_dirWatcher(new ZopDirWatcher(DaemonPath, this))
{
    qRegisterMetaType<WifiHotspot>("WifiHotspot");

    s_hotspotConfigFieldsMap.insert(Ssid, QStringLiteral("ssid"));
    s_hotspotConfigFieldsMap.insert(Passphrase, QStringLiteral("passphrase"));
    s_hotspotConfigFieldsMap.insert(MhsBand, QStringLiteral("mhs_band"));
    s_hotspotConfigFieldsMap.insert(Band, QStringLiteral("band"));
    s_hotspotConfigFieldsMap.insert(MaxNumSta, QStringLiteral("max_num_sta"));
    s_hotspotConfigFieldsMap.insert(SecurityType, QStringLiteral("security_type"));
    s_hotspotConfigFieldsMap.insert(AutoshutdownTime, QStringLiteral("autoshutdown_time"));
    s_hotspotConfigFieldsMap.insert(Privacy, QStringLiteral("privacy"));
    s_hotspotConfigFieldsMap.insert(BlockConn, QStringLiteral("block_conn"));

    s_hotspotBandMap.insert(WifiBand2_4GHz, QStringLiteral("2.4"));
    s_hotspotBandMap.insert(WifiBand5GHz, QStringLiteral("5.0"));

    s_hotspotProtocolMap.insert(WifiSecurityProtocolNone, QStringLiteral("none"));
    s_hotspotProtocolMap.insert(WifiSecurityProtocolWpa, QStringLiteral("wpa"));
    s_hotspotProtocolMap.insert(WifiSecurityProtocolWpa2, QStringLiteral("wpa2"));
    s_hotspotProtocolMap.insert(WifiSecurityProtocolWpa | WifiSecurityProtocolWpa2, QStringLiteral("wpa_mixed"));

    if (m_dirWatcher->isValid()) {
        connect(m_dirWatcher, &ZopDirWatcher::objectAdded, this, &HotspotProviderZop::init);
        return;
    }
    NetworkLog::error(WatcherFailedText, ConstructorSignature, WatcherErrorText,
                      [this] { return m_dirWatcher->errorString(); });
    discardLater(m_dirWatcher);
    setReady(false);
}

HotspotProviderZop::~HotspotProviderZop() = default;

void HotspotProviderZop::init(const QString &name)
{
    // The watcher lives until the event loop runs, and may announce an object that has been replaced meanwhile.
    if (name != ControlName || !m_dirWatcher)
        return;
    discardLater(m_dirWatcher);

    m_controlObject = new ZopObject(DaemonPath + ControlName, ReadWrite, false, this);
    m_statusObject = new ZopObject(DaemonPath + StatusName, ReadWrite, false, this);
    if (!m_controlObject->isValid()) {
        giveUp(m_controlObject);
        return;
    }
    connect(m_controlObject, &ZopObject::attributesChanged, this, &HotspotProviderZop::zopControlChanged);
    m_controlObject->setAttributeCacheEnabled(true);

    if (!m_statusObject->isValid()) {
        giveUp(m_statusObject);
        return;
    }
    connect(m_statusObject, &ZopObject::attributeChanged, this, &HotspotProviderZop::zopStatusChanged);
    m_statusObject->setAttributeCacheEnabled(true);

    // Unlike later, when only the two known states count, whatever is not "ACTIVE" is off here.
    setEnabled(m_statusObject->attribute(StateAttribute, ZopVariant()).toString() == Active);
    setReady(true);
}

void HotspotProviderZop::giveUp(ZopObject *&object)
{
    NetworkLog::error(ObjectFailedText, [object] { return object->errorString(); });
    setReady(false);
    discardLater(object);
}

bool HotspotProviderZop::enabled() const
{
    return m_enabled;
}

void HotspotProviderZop::setEnabled(AsyncHotspotEnableOperation *operation, bool enable)
{
    if (enable)
        writeRequest(enterRequest(operation, StartMessage, serializeProfile(m_hotspot)));
    else
        writeRequest(enterRequest(operation, StopMessage, ZopVariant()));
}

void HotspotProviderZop::configuration(AsyncHotspotConfigOperation *operation)
{
    // "lan_type" here, "lantype" in the profile.
    const QJsonObject wanted {{Type, LanType}, {QStringLiteral("lan_type"), AccessPointType}};
    writeRequest(enterRequest(operation, FetchMessage, wanted));
}

void HotspotProviderZop::setConfiguration(AsyncHotspotConfigOperation *operation, const WifiHotspot &profile)
{
    const Request request = enterRequest(operation, UpdateMessage, serializeProfile(profile));
    // A profile is not written too early. Its operation stays open.
    if (ready())
        writeRequest(request);
}

int HotspotProviderZop::nextId()
{
    return ++m_idSequence;
}

/*! Lets \a operation wait for the reply to a new request, which is not written yet. */
HotspotProviderZop::Request HotspotProviderZop::enterRequest(AsyncOperationBase *operation, const QString &message,
                                                             const ZopVariant &dat)
{
    Request request {nextId(), {}};
    request.changes.assignments.insert(MessageAttribute, message);
    request.changes.assignments.insert(IdAttribute, request.id);
    if (dat.isValid())
        request.changes.assignments.insert(PayloadAttribute, dat);
    m_pendingOperations.insert(request.id, operation);
    return request;
}

void HotspotProviderZop::writeRequest(const Request &request)
{
    auto forget = qScopeGuard([this, &request] { m_pendingOperations.remove(request.id); });
    const bool written = m_controlObject && m_controlObject->setAttributes(request.changes);
    forget.dismiss();
    if (written)
        return;
    fail(m_pendingOperations.take(request.id), WriteFailedReason);
    NetworkLog::error(WriteFailedReason,
                      [this] { return m_controlObject ? m_controlObject->errorString() : QString(); });
}

void HotspotProviderZop::zopControlChanged(const ZopChangeset &changes)
{
    onControlReply(controlMessage(changes));
}

void HotspotProviderZop::onControlReply(const ZopControlMessage &message)
{
    const QString &res = message.res;
    if (res != FetchMessage && res != UpdateMessage && res != StartMessage && res != StopMessage)
        return;
    const auto pending = m_pendingOperations.find(message.id);
    if (pending == m_pendingOperations.end()) {
        NetworkLog::printWarning(UnknownIdText, message.id);
        return;
    }
    AsyncOperationBase *operation = *pending; // null when its application has deleted it
    m_pendingOperations.erase(pending);

    if (res == FetchMessage) {
        if (!message.errmsg.isEmpty()) {
            refuse(operation, FetchFailedReason);
        } else if (!message.dat.isValid() || message.dat.encoding() != JsonEncoding) {
            refuse(operation, NoProfileReason);
        } else {
            const WifiHotspot hotspot = parseProfile(message.dat.toJson(nullptr));
            succeed(operation, hotspot);
            m_hotspot = hotspot;
            emit configurationChanged(hotspot);
        }
    } else if (res == UpdateMessage) {
        if (isAccepted(message)) {
            // Not the profile that was written: the daemon may keep another one. A copy: before the last listener has
            // heard of it, an earlier one may have let other replies come.
            const WifiHotspot hotspot = m_hotspot;
            succeed(operation, hotspot);
            emit configurationChanged(hotspot);
        } else {
            refuse(operation, UpdateFailedReason, message.errmsg);
        }
    } else if (isAccepted(message)) {
        // Whether the hotspot is on follows from the status object alone.
        succeed(operation, res == StartMessage);
    } else {
        refuse(operation, res == StartMessage ? StartFailedReason : StopFailedReason);
    }
}

void HotspotProviderZop::zopStatusChanged(const QString &name, const ZopVariant &value)
{
    if (name != StateAttribute)
        return;
    const QString state = value.toString();
    if (state == Active)
        setEnabled(true);
    else if (state == Inactive)
        setEnabled(false);
}

void HotspotProviderZop::setEnabled(bool enabled)
{
    if (m_enabled == enabled)
        return;
    m_enabled = enabled;
    emit enabledChanged(enabled);
}

QJsonObject HotspotProviderZop::serializeProfile(const WifiHotspot &hotspot) const
{
    if (hotspot.isEmpty()) {
        NetworkLog::printWarning(EmptyProfileText);
        return QJsonObject();
    }
    const QJsonObject network {
        {QStringLiteral("gateway_address"), QStringLiteral("192.168.0.1")},
        {QStringLiteral("gateway_subnet"), QStringLiteral("255.255.255.0")},
        {QStringLiteral("dhcp_lease_time"), QStringLiteral("120")}, // the daemon expects a text
    };
    const QJsonObject fields {
        {s_hotspotConfigFieldsMap[Ssid], hotspot.name()},
        {s_hotspotConfigFieldsMap[Passphrase], hotspot.passphrase()},
        {s_hotspotConfigFieldsMap[MhsBand], bandEnumerationToString(hotspot.band())},
        {s_hotspotConfigFieldsMap[MaxNumSta], hotspot.maxClients()},
        {s_hotspotConfigFieldsMap[SecurityType], protocolEnumerationToString(hotspot.securityType())},
        {s_hotspotConfigFieldsMap[AutoshutdownTime], hotspot.inactivityTime()},
        {s_hotspotConfigFieldsMap[Privacy], hotspot.privacy()},
        {s_hotspotConfigFieldsMap[BlockConn], hotspot.blockConn()},
    };
    return {
        {Type, LanType},
        {QStringLiteral("lantype"), AccessPointType},
        {QStringLiteral("wantype"), QStringLiteral("bridge")},
        {QStringLiteral("lancfg"), network},
        {HotspotKey, fields},
    };
}

WifiHotspot HotspotProviderZop::parseProfile(const QJsonDocument &profile) const
{
    WifiHotspot hotspot;
    const QJsonObject fields = profile.object().value(HotspotKey).toObject();
    if (fields.isEmpty())
        return hotspot;
    // A key that is not there gives an empty text, 0 or false, not the default.
    const auto field = [&fields](HotspotConfigFields name) { return fields.value(s_hotspotConfigFieldsMap[name]); };
    hotspot.setName(field(Ssid).toString());
    hotspot.setPassphrase(field(Passphrase).toString());
    hotspot.setBand(bandStringToEnumeration(field(MhsBand).toString()));
    hotspot.setMaxClients(field(MaxNumSta).toInt());
    hotspot.setSecurityType(protocolStringToEnumeration(field(SecurityType).toString()));
    hotspot.setInactivityTime(field(AutoshutdownTime).toInt());
    hotspot.setPrivacy(field(Privacy).toBool());
    hotspot.setBlockConn(field(BlockConn).toBool());
    return hotspot;
}

WifiBand HotspotProviderZop::bandStringToEnumeration(const QString &text) const
{
    return s_hotspotBandMap.key(text);
}

QString HotspotProviderZop::bandEnumerationToString(WifiBand band) const
{
    return s_hotspotBandMap[band];
}

QFlags<WifiSecurityProtocol> HotspotProviderZop::protocolStringToEnumeration(const QString &text) const
{
    return s_hotspotProtocolMap.key(text);
}

QString HotspotProviderZop::protocolEnumerationToString(QFlags<WifiSecurityProtocol> protocols) const
{
    return s_hotspotProtocolMap[protocols];
}

} // namespace morvek
