// SPDX-License-Identifier: Apache-2.0
#include "asyncwifiscanoperation.h"
#include "heap.h"
#include "localencoding.h"
#include "servicepointer.h"
#include "wifidaemon.h"
#include "wifiservice.h"

#include <QtTest/QtTest>

#include <memory>

using namespace morvek;

class TestScanMemory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void manyResultsAreHeldInOneFormAtATime_data();
    void manyResultsAreHeldInOneFormAtATime();
    void unusualFlagsAreNotKept_data();
    void unusualFlagsAreNotKept();
};

void TestScanMemory::manyResultsAreHeldInOneFormAtATime_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("plain") << QByteArray("Network");
    QTest::newRow("with what was no UTF-8") << QByteArray("\xef\xbf\xbd");
}

void TestScanMemory::manyResultsAreHeldInOneFormAtATime()
{
#ifdef HEAP_IS_SANITIZED
    // The QSKIP macro is not pedantic enough for Clang.
    return QTest::qSkip("the sanitizer has a heap of its own", __FILE__, __LINE__);
#endif
    QFETCH(QByteArray, name);
    const LocalEncoding encoding("UTF-8");
    QByteArray results("[");
    for (int i = 0; i < 5000; ++i)
        results += QByteArray(i ? "," : "") + R"({"bssid":"02:00:00:00:)" + QByteArray::number(i) + R"(","ssid":")"
            + name + ' ' + QByteArray::number(i)
            + R"(","signal_level":"-57","frequency":"2437","flags":["WPA2-PSK-CCMP","ESS"]})";
    results += "]";
    results.squeeze();
    const long parsing = Heap::peakOf([&results] { QJsonDocument::fromJson(results); });
    QVERIFY(parsing > results.size());

    const WifiServicePointer service(newWifiService());
    WifiDaemon::start();
    const std::unique_ptr<AsyncWifiScanOperation> operation(service->scan());
    const ZopVariant value = raw(results);
    const long scanning = Heap::peakOf([&value] { WifiDaemon::change("scan_results", value); });
    QCOMPARE(operation->results().size(), 5000);
    // The text in the locale's encoding stays while it is parsed; an eighth of it more is let pass.
    QVERIFY2(
        scanning < parsing + results.size() * 9 / 8,
        qPrintable(
            QStringLiteral("%1 bytes at most, and %2 for parsing %3").arg(scanning).arg(parsing).arg(results.size())));
}

void TestScanMemory::unusualFlagsAreNotKept_data()
{
    QTest::addColumn<QByteArray>("results");
    QTest::newRow("long") << "[{\"flags\":[\"" + QByteArray(1000000, 'a') + "\"]}]";
    QTest::newRow("many") << "[{\"flags\":[" + QByteArray("\"ESS\",").repeated(10000) + "\"ESS\"]}]";
    QTest::newRow("of another type") << "[{\"flags\":[[\"" + QByteArray(1000000, 'a') + "\"]]}]";
    QByteArray kinds;
    for (int i = 0; i < 1000; ++i)
        kinds += (i ? "," : "") + QByteArrayLiteral("{\"flags\":[\"kind ") + QByteArray::number(i) + "\"]}";
    QTest::newRow("of many kinds") << '[' + kinds + ']';
}

void TestScanMemory::unusualFlagsAreNotKept()
{
#ifdef HEAP_IS_SANITIZED
    // The QSKIP macro is not pedantic enough for Clang.
    return QTest::qSkip("the sanitizer has a heap of its own", __FILE__, __LINE__);
#endif
    QFETCH(QByteArray, results);
    const LocalEncoding encoding("UTF-8");
    const WifiServicePointer service(newWifiService());
    WifiDaemon::start();
    const auto scan = [&service](const QByteArray &found) {
        const std::unique_ptr<AsyncWifiScanOperation> operation(service->scan());
        WifiDaemon::change("scan_results", raw(found));
        return operation->results().size();
    };
    QCOMPARE(scan("[{}]"), 1);
    const long before = Heap::s_held;
    QVERIFY(scan(results) > 0);
    QCOMPARE(scan("[{}]"), 1);
    QVERIFY2(Heap::s_held < before + 20000, qPrintable(QString::number(Heap::s_held - before)));
}

QTEST_GUILESS_MAIN(TestScanMemory)
#include "tst_scanmemory.moc"
