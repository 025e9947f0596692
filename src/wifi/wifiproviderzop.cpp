// SPDX-License-Identifier: Apache-2.0
#include "wifiproviderzop_p.h"

#include "asyncoperationwriter_p.h"
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "networklog_p.h"
#include "wificonnectionconfig.h"
#include "wifiproviderzopparserutilities.h"
#include "zopaccess_p.h"
#include "zopcontrolcommand.h"
#include "zopdirwatcher.h"

#include <QtCore/QCborArray>
#include <QtCore/QCborMap>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QScopeGuard>
#include <QtCore/QTextCodec>

namespace morvek {

namespace {

const QLatin1String DaemonPath("/zop/services/wifi/");
const QLatin1String ControlName("control");
const QLatin1String StatusName("status");

const QLatin1String PowerAttribute("wifi_power");
const QLatin1String ConnectionAttribute("wifi_status");
const QLatin1String ScanResultsAttribute("scan_results");
const QLatin1String LastEventAttribute("last_event");

const QLatin1String PowerMessage("wifi_power");
const QLatin1String ScanMessage("scan");
const QLatin1String AddMessage("wnet_new");
const QLatin1String SelectMessage("wnet_select");
const QLatin1String DisconnectMessage("wnet_disableall");

const QLatin1String On("on");
const QLatin1String Off("off");

const QLatin1String Bssid("bssid");
const QLatin1String Ssid("ssid");
const QLatin1String KeyManagement("key_mgmt");

const QLatin1String ConnectFailedEvent("CTRL-EVENT-SSID-TEMP-DISABLED");

const QLatin1String InvalidConfigurationReason("Wifi Configuration provided is not valid");
const QLatin1String BusyReason("Another connect operation in progress.");
const QLatin1String CancelledReason("Cancelling connect operation, due to issued disconnect command");
const QLatin1String ConnectFailedReason("Failed to connect to Access Point");

const char ConnectSignature[] = "virtual void morvek::WifiProviderZop::connectAccessPoint("
                                "morvek::AsyncWifiConnectOperation*, const morvek::WifiConnectionConfig&)";

const char InitFailedText[] = "Unable to initialize WifiProviderZop";
const char ControlFailedText[] = "Unable to open Wi-Fi service ZOP control object ";
const char StatusFailedText[] = "Unable to open Wi-Fi service ZOP status object ";
const char InvalidConfigurationText[] =
    "Connection AP - connectAccessPoint in provider - Wifi Configuration provided is not valid ";
const char CommandFailedText[] = "Wi-Fi service control command failed\nmsg: ";
const char ErrorCodeText[] = "\nerror code: ";
const char ErrorText[] = "\nerror: ";
const char ConnectCancelledText[] = "Connect operation was cancelled due to disconnect attempt";
const char DisconnectFailedText[] = "Failed to disconnet from Access Point";
const char PowerInvalidText[] = "Wi-Fi status ZOP object powered attribute is not valid";
const char PowerUnknownText[] = "Wi-Fi status ZOP object powered attribute does not have a recognized value: ";
const char PoweredText[] = "Updating powered flag to: ";
const char PoweredChangedText[] = "Emitting poweredChanged signal with powered: ";
const char ConnectionValidText[] =
    "Wi-Fi status ZOP object status attribute is valid. Populating currently connected access point";
const char ConnectionInvalidText[] =
    "Wi-Fi status ZOP object status attribute is invalid. Clearing currently connected access point";
const char AccessPointText[] = "Setting connected access point: ";
const char ConnectedText[] = "Updating connected flag to: ";
const char ConnectedChangedText[] = "Emitting connectedChanged signal with connected: ";
const char ScanResultsInvalidText[] = "Scan results attribute value is not valid";
const char LastEventText[] = "Wi-Fi status ZOP object last_event attribute is present. Identifying event";

/*! The payload of "wnet_new" for a valid \a config, which is either open or has a passkey. */
QJsonObject networkEntry(const WifiConnectionConfig &config)
{
    QJsonObject entry {{Ssid, config.ssid()}};
    if (config.keyManagementType() == WifiKeyManagementPsk) {
        entry.insert(KeyManagement, QStringLiteral("WPA-PSK")); // also for WPA2
        entry.insert(QStringLiteral("psk"), config.passkey());
    } else {
        entry.insert(KeyManagement, QStringLiteral("NONE"));
    }
    return entry;
}

/*! What the daemon does not name stays 0 here, which is not what a new access point starts with. */
WifiAccessPoint connectedAccessPointFrom(const QJsonObject &connection)
{
    QFlags<WifiSecurityProtocol> protocols;
    QFlags<WifiKeyManagementType> keyManagement;
    QFlags<WifiCipher> ciphers;
    WifiProviderZopParserUtilities::parseStatusKeyManagement(connection.value(KeyManagement).toString(), protocols,
                                                             keyManagement);
    WifiProviderZopParserUtilities::parseStatusCipher(connection.value(QLatin1String("pairwise_cipher")).toString(),
                                                      ciphers);
    WifiAccessPoint accessPoint;
    accessPoint.setBssid(connection.value(Bssid).toString());
    accessPoint.setSsid(connection.value(Ssid).toString());
    accessPoint.setSecurityProtocols(protocols);
    accessPoint.setKeyManagementTypes(keyManagement);
    accessPoint.setCiphers(ciphers);
    return accessPoint;
}

/*! The number that \a text is, when it is at most nine digits; else -1. */
int shortNumber(QStringView text)
{
    constexpr int MostDigits = 9; // of which any fit
    if (text.size() > MostDigits)
        return -1;
    int number = 0;
    for (const QChar digit : text) {
        if (digit < QLatin1Char('0') || digit > QLatin1Char('9'))
            return -1;
        number = number * 10 + (digit.unicode() - '0');
    }
    return number;
}

// Qt's conversions take longer than what else is done for a member of a result, so they only get what is unusual.

int signalLevel(const QString &text)
{
    const bool isNegative = text.startsWith(QLatin1Char('-'));
    const int number = shortNumber(QStringView(text).mid(isNegative));
    if (number < 0)
        return text.toInt();
    return isNegative ? -number : number;
}

unsigned int frequency(const QString &text)
{
    const int number = shortNumber(text);
    return number < 0 ? text.toUInt() : uint(number);
}

void writeAccessPoint(WifiAccessPoint *accessPoint, const QCborMap &result, ScanFlagsReader *flags)
{
    const ScannedSecurity security = flags->read(result.value(QLatin1String("flags")).toArray());
    accessPoint->setBssid(result.value(Bssid).toString());
    accessPoint->setSsid(result.value(Ssid).toString());
    accessPoint->setRssi(signalLevel(result.value(QLatin1String("signal_level")).toString()));
    accessPoint->setFrequency(frequency(result.value(QLatin1String("frequency")).toString()));
    accessPoint->setSecurityProtocols(security.protocols);
    accessPoint->setKeyManagementTypes(security.keyManagement);
    accessPoint->setCiphers(security.ciphers);
    accessPoint->setServiceSet(security.serviceSet);
}

/*! Whether the text of \a value would be the same bytes in the local encoding, but for a mark of their order. */
bool isLocalText(const ZopVariant &value)
{
    constexpr int Utf8Mib = 106;
    // What is not UTF-8 has been replaced in the text; the parser lets some of it pass.
    return QTextCodec::codecForLocale()->mibEnum() == Utf8Mib
        && !value.toString().contains(QChar(QChar::ReplacementCharacter));
}

QJsonDocument scanResults(const ZopVariant &value)
{
    QJsonDocument document = isLocalText(value) ? value.toJson(nullptr) : QJsonDocument();
    if (!document.isNull())
        return document;
    QByteArray text = value.toString().toLocal8Bit();
    text.squeeze(); // the conversion takes room for the worst case
    return QJsonDocument::fromJson(text);
}

/*!
 * Lets go of each result once it is read: thousands of them need not be held in two forms. They are read as what the
 * JSON classes keep them in, as these take longer for each member.
 */
QList<WifiAccessPoint> scannedAccessPoints(const ZopVariant &value, ScanFlagsReader *flags)
{
    flags->beginScan();
    QCborArray results = QCborArray::fromJsonArray(scanResults(value).array());
    QList<WifiAccessPoint> accessPoints;
    accessPoints.reserve(int(results.size()));
    const WifiAccessPoint none;
    for (QCborValueRef result : results) {
        accessPoints.append(none);
        writeAccessPoint(&accessPoints.last(), result.toMap(), flags);
        result = QCborValue();
    }
    return accessPoints;
}

/*! Lets \a operation wait in \a pending from before \a send sends its request; no longer when that fails. */
template<typename Operation, typename Send>
void sendAwaited(QList<QPointer<Operation>> &pending, Operation *operation, Send send)
{
    pending.append(operation);
    auto forget = qScopeGuard([&] { pending.removeOne(operation); });
    send();
    forget.dismiss();
}

void printOpenError(const char *text, const ZopObject &object)
{
    NetworkLog::printError(
        text, [&object] { return object.path(); }, ": ", [&object] { return object.errorString(); });
}

} // namespace

WifiProviderZop::WifiProviderZop()
    : m_directoryWatcher(new ZopDirWatcher(DaemonPath, this))
{
    connect(m_directoryWatcher, &ZopDirWatcher::objectAdded, this, &WifiProviderZop::zopDirWatcherObjectAdded);
}

WifiProviderZop::~WifiProviderZop() = default;

void WifiProviderZop::zopDirWatcherObjectAdded(const QString &name)
{
    // The watcher lives until the event loop runs, and may announce an object that has been replaced meanwhile.
    if (name != StatusName || !m_directoryWatcher)
        return;
    discardLater(m_directoryWatcher);
    init();
}

void WifiProviderZop::init()
{
    auto giveUp = qScopeGuard([this] {
        discardLater(m_controlObject);
        discardLater(m_statusObject);
    });
    if (!initZopControlObj() || !initZopStatusObj()) {
        NetworkLog::printError(InitFailedText);
        return;
    }
    // Results and events that are there already belong to nobody who waits here.
    handleStatusZopPoweredAttribute(m_statusObject->attribute(PowerAttribute, ZopVariant()), true);
    handleStatusZopStatusAttribute(m_statusObject->attribute(ConnectionAttribute, ZopVariant()), true);
    giveUp.dismiss();
    setReady(true);
}

bool WifiProviderZop::initZopControlObj()
{
    m_controlObject = new ZopObject(DaemonPath + ControlName, ReadWrite, false, this);
    if (m_controlObject->isValid())
        return true;
    printOpenError(ControlFailedText, *m_controlObject);
    return false;
}

bool WifiProviderZop::initZopStatusObj()
{
    m_statusObject = new ZopObject(DaemonPath + StatusName, ReadOnly, false, this);
    if (!m_statusObject->isValid()) {
        printOpenError(StatusFailedText, *m_statusObject);
        return false;
    }
    // In this order: the values that are there are read, and not told as changes.
    m_statusObject->setAttributeCacheEnabled(true);
    connect(m_statusObject, &ZopObject::attributeChanged, this, &WifiProviderZop::zopStatusChanged);
    connect(m_statusObject, &ZopObject::attributeRemoved, this, &WifiProviderZop::zopStatusAttributeRemoved);
    return true;
}

bool WifiProviderZop::powered() const
{
    return m_powered;
}

bool WifiProviderZop::connected() const
{
    return m_connected;
}

WifiAccessPoint WifiProviderZop::connectedAccessPoint() const
{
    return m_currentAccessPoint;
}

void WifiProviderZop::powerOn()
{
    startCommand(m_controlObject, PowerMessage, QString(On), this, &WifiProviderZop::zopControlCommandComplete);
}

void WifiProviderZop::powerOff()
{
    startCommand(m_controlObject, PowerMessage, QString(Off), this, &WifiProviderZop::zopControlCommandComplete);
}

void WifiProviderZop::scan(AsyncWifiScanOperation *operation)
{
    sendAwaited(m_pendingScans, operation, [this] {
        startCommand(m_controlObject, ScanMessage, ZopVariant(), this, &WifiProviderZop::zopControlCommandComplete);
    });
}

void WifiProviderZop::connectAccessPoint(AsyncWifiConnectOperation *operation, const WifiConnectionConfig &config)
{
    if (!config.isValid()) {
        AsyncOperationWriter::setError(*operation, InvalidConfigurationReason);
        NetworkLog::printWarning(InvalidConfigurationText, ConnectSignature);
        return;
    }
    if (!m_pendingConnects.isEmpty()) {
        AsyncOperationWriter::setError(*operation, BusyReason);
        return;
    }
    sendAwaited(m_pendingConnects, operation, [this, &config] { addAccessPoint(config); });
}

void WifiProviderZop::disconnectAccessPoint()
{
    failFirstConnect(CancelledReason);
    startCommand(m_controlObject, DisconnectMessage, ZopVariant(), this,
                 &WifiProviderZop::disconnectAccessPointCompelete);
}

ZopControlCommand *WifiProviderZop::addAccessPoint(const WifiConnectionConfig &config)
{
    return startCommand(m_controlObject, AddMessage, networkEntry(config), this,
                        &WifiProviderZop::onAddAccessPointComplete);
}

void WifiProviderZop::enableAccessPoint(const QString &id)
{
    startCommand(m_controlObject, SelectMessage, id, this, &WifiProviderZop::onEnableAccessPointComplete);
}

void WifiProviderZop::zopControlCommandComplete(ZopControlCommand *command)
{
    if (command->hasError())
        NetworkLog::printError(
            CommandFailedText, [command] { return command->message(); }, ErrorCodeText,
            [command] { return command->errorCode(); }, ErrorText, [command] { return command->errorString(); });
}

void WifiProviderZop::onAddAccessPointComplete(ZopControlCommand *command)
{
    if (command->hasError())
        failFirstConnect(command->errorString());
    // After a refusal too: daemons see every "wnet_new" followed by a "wnet_select".
    enableAccessPoint(command->datResponse().toString());
}

void WifiProviderZop::onEnableAccessPointComplete(ZopControlCommand *command)
{
    if (m_pendingConnects.isEmpty())
        NetworkLog::printWarning(ConnectCancelledText);
    else if (command->hasError())
        failFirstConnect(command->errorString());
}

void WifiProviderZop::disconnectAccessPointCompelete(ZopControlCommand *command)
{
    if (command->hasError())
        NetworkLog::error(DisconnectFailedText);
}

void WifiProviderZop::zopControlChanged(const QString &name, const ZopVariant &attribute)
{
    Q_UNUSED(name)
    Q_UNUSED(attribute)
}

void WifiProviderZop::zopStatusChanged(const QString &name, const ZopVariant &attribute)
{
    if (name == PowerAttribute)
        handleStatusZopPoweredAttribute(attribute, false);
    else if (name == ConnectionAttribute)
        handleStatusZopStatusAttribute(attribute, false);
    else if (name == ScanResultsAttribute)
        handleStatusZopScanResultsAttribute(attribute);
    else if (name == LastEventAttribute)
        handleStatusZopLastEventAttribute(attribute);
}

void WifiProviderZop::zopStatusAttributeRemoved(const QString &name)
{
    if (name.startsWith(ConnectionAttribute))
        handleStatusZopStatusAttribute(ZopVariant(), false);
}

void WifiProviderZop::handleStatusZopPoweredAttribute(const ZopVariant &value, bool initial)
{
    if (!value.isValid()) {
        NetworkLog::printWarning(PowerInvalidText);
        return;
    }
    const QString text = value.toString();
    if (text != On && text != Off) {
        NetworkLog::printWarning(PowerUnknownText, text);
        return;
    }
    const bool newPowered = text == On;
    if (newPowered == m_powered)
        return;
    NetworkLog::printDebug2(PoweredText, int(newPowered));
    m_powered = newPowered;
    if (initial)
        return;
    NetworkLog::printDebug2(PoweredChangedText, int(m_powered));
    emit poweredChanged(m_powered);
}

void WifiProviderZop::handleStatusZopStatusAttribute(const ZopVariant &value, bool initial)
{
    if (value.isValid()) {
        NetworkLog::debug1(ConnectionValidText);
        m_currentAccessPoint = connectedAccessPointFrom(value.toJson(nullptr).object());
        if (!m_currentAccessPoint.isEmpty() && !m_pendingConnects.isEmpty()) {
            NetworkLog::printWarning(AccessPointText, m_currentAccessPoint);
            if (AsyncWifiConnectOperation *operation = m_pendingConnects.takeFirst())
                AsyncOperationWriter::setResult(*operation, m_currentAccessPoint);
        }
    } else {
        NetworkLog::debug1(ConnectionInvalidText);
        m_currentAccessPoint = WifiAccessPoint();
    }

    const bool newConnected = !m_currentAccessPoint.isEmpty();
    if (newConnected == m_connected)
        return;
    NetworkLog::printDebug2(ConnectedText, int(newConnected));
    m_connected = newConnected;
    if (initial)
        return;
    NetworkLog::printDebug2(ConnectedChangedText, int(m_connected));
    emit connectedChanged(m_connected);
}

void WifiProviderZop::handleStatusZopScanResultsAttribute(const ZopVariant &value)
{
    if (!value.isValid() || m_pendingScans.isEmpty()) {
        NetworkLog::printWarning(ScanResultsInvalidText);
        return;
    }
    const QList<WifiAccessPoint> accessPoints = scannedAccessPoints(value, &m_flagsReader);
    while (!m_pendingScans.isEmpty()) {
        if (AsyncWifiScanOperation *operation = m_pendingScans.takeFirst())
            AsyncOperationWriter::setResults(*operation, accessPoints);
    }
}

void WifiProviderZop::handleStatusZopLastEventAttribute(const ZopVariant &value)
{
    if (!value.isValid())
        return;
    NetworkLog::debug1(LastEventText);
    if (value.toString().contains(ConnectFailedEvent))
        failFirstConnect(ConnectFailedReason);
}

/*! Ends the connect that is pending, if any, as failed. */
void WifiProviderZop::failFirstConnect(const QString &message)
{
    if (m_pendingConnects.isEmpty())
        return;
    if (AsyncWifiConnectOperation *operation = m_pendingConnects.takeFirst())
        AsyncOperationWriter::setError(*operation, message);
}

} // namespace morvek
