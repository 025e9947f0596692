// SPDX-License-Identifier: Apache-2.0
#include "managedradiocase.h"

using namespace morvek;

void ManagedRadioCase::initTestCase()
{
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY2(m_bus->errorString().isEmpty(), qPrintable(m_bus->errorString()));
}

void ManagedRadioCase::init()
{
    m_manager = std::make_unique<FakeManager>();
    m_wifi = m_manager->addWifi(QStringLiteral("wlan0"));
    m_house = addAccessPoint("House", 1, FakeManager::Wpa2);
    m_guest = addAccessPoint("Guest", 3, 0);
    QVERIFY(m_manager->start());
    m_daemon = std::make_unique<DaemonFixture>();
}

void ManagedRadioCase::cleanup()
{
    m_status.reset();
    m_service.reset();
    m_daemon.reset();
    m_manager.reset();
}

void ManagedRadioCase::startDaemons(const QStringList &arguments)
{
    QVERIFY(m_daemon->process().start(
        m_daemon->root(),
        QStringList {QStringLiteral("--verbose"), QStringLiteral("--network"), QStringLiteral("manager")} + arguments));
    m_service = WifiServicePointer(newWifiService());
    if (!m_service->ready())
        QSignalSpy(m_service.get(), &ServiceBase::readyChanged).wait(Patience);
    QVERIFY(m_service->ready());
    m_status = std::make_unique<Seen>(QLatin1String(WifiStatus));
    m_manager->forgetCalls();
}

QString ManagedRadioCase::addAccessPoint(const char *ssid, int number, uint rsn, uint percent)
{
    return m_manager->addAccessPoint(m_wifi, ssid,
                                     {{QStringLiteral("Flags"), rsn == 0 ? 0U : 1U},
                                      {QStringLiteral("RsnFlags"), rsn},
                                      {QStringLiteral("Strength"), percent},
                                      {QStringLiteral("HwAddress"), QStringLiteral("0A:00:00:00:00:0%1").arg(number)}});
}

QString ManagedRadioCase::joinAsTheUser(const char *ssid, const QString &accessPoint)
{
    const QString profile = m_manager->addProfile(
        {{QStringLiteral("connection"), {{QStringLiteral("type"), QStringLiteral("802-11-wireless")}}},
         {QStringLiteral("802-11-wireless"), {{QStringLiteral("ssid"), QByteArray(ssid)}}}});
    m_manager->beginActivation(m_wifi, profile, accessPoint);
    m_manager->activate(m_wifi);
    return profile;
}

AsyncWifiConnectOperation *ManagedRadioCase::connectTo(const char *ssid, const char *passkey)
{
    WifiConnectionConfig config;
    config.setSsid(QString::fromUtf8(ssid));
    if (passkey) {
        config.setPasskey(QString::fromLatin1(passkey));
        config.setKeyManagementType(WifiKeyManagementPsk);
        config.setSecurityProtocol(WifiSecurityProtocolWpa2);
    }
    return m_service->connectAccessPoint(config);
}

BusCall ManagedRadioCase::join(int count)
{
    if (!m_manager->waitForCalls(QStringLiteral("AddAndActivateConnection2"), count))
        return {};
    return m_manager->calls(QStringLiteral("AddAndActivateConnection2")).at(count - 1);
}

void ManagedRadioCase::refusePasskey()
{
    m_manager->setStates(m_wifi, {{50, 0}, {60, 0}, {40, 0}, {50, 0}, {60, 8}, {120, 7}, {30, 0}});
}

QStringList ManagedRadioCase::told(int count)
{
    const bool all = QTest::qWaitFor([&] { return m_status->updates.count() >= count; }, Patience);
    return all ? m_status->lines() : m_status->lines() << QStringLiteral("and no more");
}

QStringList ManagedRadioCase::toldUntil(const QString &line)
{
    const bool isLast = QTest::qWaitFor([&] { return m_status->lines().endsWith(line); }, Patience);
    return isLast ? m_status->lines() : m_status->lines() << QStringLiteral("and not ") + line;
}

void ManagedRadioCase::forget()
{
    m_status->updates.clear();
    m_manager->forgetCalls();
}

QList<bool> ManagedRadioCase::autoconnects() const
{
    QList<bool> values;
    const QVector<BusCall> calls = m_manager->calls(QStringLiteral("Set"));
    for (const BusCall &call : calls) {
        if (call.text(1) == QLatin1String("Autoconnect"))
            values += call.arguments.value(2).toBool();
    }
    return values;
}

QString ManagedRadioCase::request(const char *message, const char *dat)
{
    ZopObject control(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    return Request(&control, message, dat).outcome();
}

QString ManagedRadioCase::connected(const char *bssid, int identifier, const char *ssid, const char *keyManagement,
                                    const char *cipher)
{
    return QStringLiteral("last_event=CTRL-EVENT-CONNECTED - Connection to %1 completed [id=%2 id_str=] "
                          "wifi_status={\"bssid\":\"%1\",\"key_mgmt\":\"%3\",\"pairwise_cipher\":\"%4\","
                          "\"ssid\":\"%5\"}")
        .arg(QLatin1String(bssid), QString::number(identifier), QLatin1String(keyManagement), QLatin1String(cipher),
             QLatin1String(ssid));
}

QString ManagedRadioCase::disconnected(const char *bssid, int reason)
{
    return QStringLiteral("last_event=CTRL-EVENT-DISCONNECTED bssid=%1 reason=%2 -wifi_status")
        .arg(QLatin1String(bssid))
        .arg(reason);
}

QString ManagedRadioCase::wrongKey(int identifier, const char *ssid)
{
    return QStringLiteral("last_event=CTRL-EVENT-SSID-TEMP-DISABLED id=%1 ssid=\"%2\" auth_failures=1 duration=10 "
                          "reason=WRONG_KEY")
        .arg(identifier)
        .arg(QLatin1String(ssid));
}
