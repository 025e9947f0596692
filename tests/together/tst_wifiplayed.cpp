// SPDX-License-Identifier: Apache-2.0
#include "wifiapplication.h"
#include "zopdirwatcher.h"

using namespace morvek;

/*! The Wi-Fi service and what only a played world brings about, and a daemon that is late or lies. */
class WifiPlayedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void waitsForTheDaemon();
    void madeWhileTheDaemonIsDead();
    void oldResultsCompleteNothing();
    void hostileResults_data();
    void hostileResults();
    void manyResults();
    void deletedInItsOwnSlot_data();
    void deletedInItsOwnSlot();

private:
    void publish(const char *name, const ZopVariant &value);

    std::unique_ptr<DaemonFixture> m_daemon;
};

void WifiPlayedTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("20")}));
}

void WifiPlayedTest::cleanup()
{
    m_daemon.reset();
}

/*! Writes into the status object, as its daemon does. */
void WifiPlayedTest::publish(const char *name, const ZopVariant &value)
{
    ZopObject status(QLatin1String(WifiStatus), ZopObject::ReadWrite, false);
    ZopChangeset changes;
    changes.assignments.insert(QLatin1String(name), value);
    QVERIFY2(status.setAttributes(changes), qPrintable(status.errorString()));
}

void WifiPlayedTest::waitsForTheDaemon()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->makeRoot());
    const Application service(newWifiService());
    QSignalSpy ready(service.get(), &ServiceBase::readyChanged);
    Scan early(service->scan());
    QCOMPARE(early.outcome(), QStringLiteral("-1 Service is not ready"));
    QVERIFY(ready.isEmpty());
    QVERIFY(m_daemon->start(QStringLiteral("headunit")));
    QTRY_COMPARE_WITH_TIMEOUT(ready.count(), 1, Patience);
    QVERIFY(service->connected());
}

void WifiPlayedTest::madeWhileTheDaemonIsDead()
{
    m_daemon->kill();
    const Application tooEarly(newWifiService());
    QSignalSpy ready(tooEarly.get(), &ServiceBase::readyChanged);
    // It has looked when a watcher that was made later has announced the status.
    ZopDirWatcher watcher(QStringLiteral("/zop/services/wifi/"));
    QSignalSpy announced(&watcher, &ZopDirWatcher::objectAdded);
    QTRY_VERIFY_WITH_TIMEOUT(!announced.isEmpty(), Patience);
    QVERIFY(m_daemon->start(QStringLiteral("headunit")));
    const Application inTime = wifiApplication();
    QVERIFY(inTime->ready());
    QVERIFY(ready.isEmpty());
    QVERIFY(!tooEarly->ready());
}

void WifiPlayedTest::oldResultsCompleteNothing()
{
    publish("scan_results", QStringLiteral(R"([{"bssid":"02:00:00:00:99:99"}])"));
    const Application service = wifiApplication();
    Scan scan(service->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(scan.operation->results().size(), 7);
    QVERIFY(found(scan, QStringLiteral("02:00:00:00:99:99")).isEmpty());
}

void WifiPlayedTest::hostileResults_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("ssids");
    const QStringList none;
    const auto one = [](const char *ssid) { return QStringList(QString::fromUtf8(ssid)); };
    QTest::newRow("nothing") << QByteArray("") << none;
    QTest::newRow("an object") << QByteArray(R"({"bssid":"02:00:00:00:00:01","ssid":"a"})") << none;
    QTest::newRow("cut off") << QByteArray(R"([{"bssid":"02:00:00:00:00:01","ssid":"a"},{"bss)") << none;
    QTest::newRow("invalid UTF-8") << QByteArray("[{\"ssid\":\"\xff\xfe\"}]")
                                   << QStringList(QString::fromUtf8("\ufffd\ufffd"));
    QTest::newRow("nested") << QByteArray(10000, '[') + QByteArray(10000, ']') << none;
    QTest::newRow("wrong types") << QByteArray(R"([1,null,"x",[],{"ssid":7,"flags":{},"signal_level":-4}])")
                                 << QStringList({QString(), QString(), QString(), QString(), QString()});
    QTest::newRow("a zero byte") << QByteArray(R"([{"ssid":"a\u0000b"}])")
                                 << QStringList(QString(QLatin1String("a\0b", 3)));
    QTest::newRow("quotes") << QByteArray(R"([{"ssid":"\"a\\'\n"}])") << one("\"a\\'\n");
    QTest::newRow("many scripts") << QByteArray("[{\"ssid\":\"\u041c\u043e\u0440\u0435 \U0001f697\"}]")
                                  << one("\u041c\u043e\u0440\u0435 \U0001f697");
}

void WifiPlayedTest::hostileResults()
{
    QFETCH(QByteArray, text);
    QFETCH(QStringList, ssids);
    const Application service = wifiApplication();
    service->powerOff(); // no results but those of the test
    QTRY_VERIFY_WITH_TIMEOUT(!service->powered(), Patience);
    Scan scan(service->scan());
    publish("scan_results", ZopVariant(text, "text"));
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QStringList read;
    const QList<WifiAccessPoint> results = scan.operation->results();
    for (const WifiAccessPoint &accessPoint : results)
        read += accessPoint.ssid();
    QCOMPARE(read, ssids);
}

void WifiPlayedTest::manyResults()
{
    QJsonArray results;
    for (int i = 0; i < 5000; ++i)
        results.append(QJsonObject {{QStringLiteral("bssid"), QString::number(i)}});
    const Application service = wifiApplication();
    service->powerOff();
    QTRY_VERIFY_WITH_TIMEOUT(!service->powered(), Patience);
    Scan scan(service->scan());
    publish("scan_results", results);
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(scan.operation->results().size(), 5000);
    QCOMPARE(scan.operation->results().at(4999).bssid(), QStringLiteral("4999"));
}

void WifiPlayedTest::deletedInItsOwnSlot_data()
{
    QTest::addColumn<QByteArray>("signal");
    QTest::newRow("readyChanged") << QByteArray(SIGNAL(readyChanged(bool)));
    QTest::newRow("poweredChanged") << QByteArray(SIGNAL(poweredChanged(bool)));
    QTest::newRow("connectedChanged") << QByteArray(SIGNAL(connectedChanged(bool)));
}

void WifiPlayedTest::deletedInItsOwnSlot()
{
    QFETCH(QByteArray, signal);
    WifiService *service = newWifiService();
    const QPointer<WifiService> alive(service);
    QTimer slotOwner; // stands for an object of the application
    connect(&slotOwner, &QTimer::timeout, [&service] { deleteWifiService(&service); });
    connect(service, signal.constData(), &slotOwner, SIGNAL(timeout()));
    connect(service, &ServiceBase::readyChanged, service, [&service] {
        if (service)
            service->powerOff();
    });
    QTRY_VERIFY_WITH_TIMEOUT(!alive, Patience);
    QVERIFY(!service);
    // The daemon and the platform go on: another service sees them well.
    const Application next = wifiApplication();
    next->powerOn();
    QTRY_VERIFY_WITH_TIMEOUT(next->powered(), Patience);
    Scan scan(next->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
}

QTEST_GUILESS_MAIN(WifiPlayedTest)
#include "tst_wifiplayed.moc"
