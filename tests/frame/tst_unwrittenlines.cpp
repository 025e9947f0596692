// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotenableoperation.h"
#include "asyncnetworkinterfaceoperation.h"
#include "asyncwifiscanoperation.h"
#include "hotspotservice.h"
#include "logcapture.h"
#include "networkingdaemon.h"
#include "networkinterfaceservice.h"
#include "servicepointer.h"
#include "tetheringdaemon.h"
#include "wifidaemon.h"
#include "wifiservice.h"

#include <QtCore/QTextCodec>
#include <QtTest/QtTest>

#include <functional>
#include <memory>

using namespace morvek;

namespace {

/*! The local 8-bit encoding of the whole program: it counts the texts that are converted to it. */
class CountingCodec : public QTextCodec
{
public:
    QByteArray name() const override { return QByteArrayLiteral("counting"); }
    int mibEnum() const override { return -1300; }
    int converted = 0;

protected:
    QString convertToUnicode(const char *bytes, int size, ConverterState *) const override
    {
        return QString::fromLatin1(bytes, size);
    }
    QByteArray convertFromUnicode(const QChar *text, int size, ConverterState *) const override
    {
        ++const_cast<CountingCodec *>(this)->converted;
        return QString(text, size).toLatin1();
    }
};

using Site = std::function<void()>;

} // namespace

Q_DECLARE_METATYPE(Site)

/*!
 * What a line would say is asked of nobody, and not put together, when the line is not written.
 */
class TestUnwrittenLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { ZopDouble::reset(); }

    void askForNoTexts_data();
    void askForNoTexts();
    void convertNoTexts_data();
    void convertNoTexts();

private:
    CountingCodec *m_codec = nullptr;
};

void TestUnwrittenLines::initTestCase()
{
    m_codec = new CountingCodec; // belongs to Qt
    QTextCodec::setCodecForLocale(m_codec);
}

void TestUnwrittenLines::askForNoTexts_data()
{
    QTest::addColumn<Site>("site");
    QTest::addColumn<int>("verbosity"); // at which the line is written
    QTest::addColumn<int>("needed");    // by the way, for something else
    QTest::addColumn<int>("written");   // for the line
    QTest::newRow("Wi-Fi control object") << Site([] {
        const WifiServicePointer service(newWifiService());
        ZopDouble::store(QLatin1String(WifiDaemon::Status), {});
        WifiDaemon::announce("status");
    }) << 2 << 0 << 2;
    QTest::newRow("Wi-Fi status object") << Site([] {
        const WifiServicePointer service(newWifiService());
        ZopDouble::store(QLatin1String(WifiDaemon::Control), {});
        WifiDaemon::announce("status");
    }) << 2 << 0 << 2;
    QTest::newRow("Wi-Fi request") << Site([] {
        const WifiServicePointer service(newWifiService());
        WifiDaemon::start();
        service->powerOn();
        ZopDouble::answerError(0, 5, QStringLiteral("Not now"));
    }) << 2 << 1 << 2;
    QTest::newRow("tethering watcher") << Site([] {
        ZopDouble::refuse(QLatin1String(TetheringDaemon::Directory), QStringLiteral("No such directory"));
        const HotSpotServicePointer service(newHotSpotService());
    }) << 2 << 0 << 1;
    QTest::newRow("tethering object") << Site([] {
        const HotSpotServicePointer service(newHotSpotService());
        TetheringDaemon::announce("control");
        TetheringDaemon::deleteProviders();
    }) << 2 << 0 << 1;
    QTest::newRow("tethering request") << Site([] {
        const HotSpotServicePointer service(newHotSpotService());
        TetheringDaemon::start();
        ZopDouble::refuseWrites(QLatin1String(TetheringDaemon::Control), QStringLiteral("Full"));
        const std::unique_ptr<AsyncHotspotEnableOperation> operation(service->setEnabled(false));
        TetheringDaemon::deleteProviders();
    }) << 2 << 0 << 1;
    QTest::newRow("networking request") << Site([] {
        NetworkingDaemon::start();
        const NetworkInterfaceServicePointer service(newNetworkInterfaceService());
        NetworkingDaemon::addInterface("en0",
                                       NetworkingDaemon::with(NetworkingDaemon::unplugged(), "manual", text("yes")));
        const std::unique_ptr<AsyncNetworkInterfaceOperation> operation(
            service->configure(service->interfaces().constFirst(), NetworkInterfaceConfig()));
        ZopDouble::answerError(0, 5, QStringLiteral("Not now"));
    }) << 6 << 2 << 1;
}

void TestUnwrittenLines::askForNoTexts()
{
    QFETCH(Site, site);
    QFETCH(int, verbosity);
    QFETCH(int, needed);
    QFETCH(int, written);
    const LogCapture log(verbosity - 1);
    site();
    QCOMPARE(ZopDouble::askedTexts(), needed);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ZopDouble::reset();
    KrelLogger::setVerbosity(verbosity);
    site();
    QCOMPARE(ZopDouble::askedTexts(), needed + written);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TestUnwrittenLines::convertNoTexts_data()
{
    QTest::addColumn<Site>("site");
    QTest::addColumn<int>("verbosity");
    QTest::addColumn<int>("needed");
    QTest::addColumn<int>("written");
    const auto scan = [](const char *flag) {
        return Site([flag] {
            const WifiServicePointer service(newWifiService());
            WifiDaemon::start();
            const std::unique_ptr<AsyncWifiScanOperation> operation(service->scan());
            WifiDaemon::change("scan_results", raw(QByteArray(R"([{"flags":[")") + flag + R"("]}])"));
            QCOMPARE(operation->results().size(), 1);
        });
    };
    const auto connection = [](const char *key, const char *cipher) {
        return Site([key, cipher] {
            const WifiServicePointer service(newWifiService());
            WifiDaemon::start();
            WifiDaemon::change("wifi_status",
                               ZopVariant(QJsonObject {{QStringLiteral("key_mgmt"), QLatin1String(key)},
                                                       {QStringLiteral("pairwise_cipher"), QLatin1String(cipher)}}));
        });
    };
    // A scan's text itself is converted. Each line has three pieces.
    QTest::newRow("unreadable flag") << scan("WPA-PSK") << 2 << 1 << 3;
    QTest::newRow("unknown protocol") << scan("WPA3-PSK-CCMP") << 2 << 1 << 3;
    QTest::newRow("unknown key management") << scan("WPA-SAE-CCMP") << 2 << 1 << 3;
    QTest::newRow("unknown cipher") << scan("WPA-PSK-GCMP") << 2 << 1 << 3;
    QTest::newRow("unknown key management of the connection") << connection("SAE", "CCMP") << 3 << 0 << 3;
    QTest::newRow("unknown cipher of the connection") << connection("NONE", "GCMP") << 3 << 0 << 3;
    QTest::newRow("not ready") << Site([] { WifiServicePointer(newWifiService())->powerOn(); }) << 3 << 0 << 2;
}

void TestUnwrittenLines::convertNoTexts()
{
    QFETCH(Site, site);
    QFETCH(int, verbosity);
    QFETCH(int, needed);
    QFETCH(int, written);
    LogCapture log(verbosity - 1);
    m_codec->converted = 0;
    site();
    QCOMPARE(m_codec->converted, needed);
    QVERIFY(log.take().isEmpty());
    ZopDouble::reset();
    KrelLogger::setVerbosity(verbosity);
    m_codec->converted = 0;
    site();
    QCOMPARE(m_codec->converted, needed + written);
    QCOMPARE(log.take().size(), 1);
}

QTEST_GUILESS_MAIN(TestUnwrittenLines)
#include "tst_unwrittenlines.moc"
