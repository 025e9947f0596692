// SPDX-License-Identifier: Apache-2.0
#include "allocations.h"
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "asyncnetworkinterfaceoperation.h"
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "hotspotproviderzop_p.h"
#include "krellogger.h"
#include "networkingdaemon.h"
#include "networkinterfaceproviderzop_p.h"
#include "networklibraryexports.h"
#include "privatehalf.h"
#include "protectedby.h"
#include "tetheringdaemon.h"
#include "wificonnectionconfig.h"
#include "wifidaemon.h"
#include "wifiproviderzop_p.h"

#include <QtTest/QtTest>

#include <functional>
#include <memory>

using namespace morvek;

namespace {

/*! The application's side of one story. */
struct Application
{
    NetworkInterfaceService *networking = nullptr;
    WifiService *wifi = nullptr;
    HotSpotService *hotspot = nullptr;
    AsyncOperationBase *operation = nullptr;

    /*! Lets what was posted happen to objects that are deleted later. */
    static void settle() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    /*! Ends everything, the providers that hotspot services leave behind and what the double has recorded included. */
    void endAll()
    {
        delete operation;
        operation = nullptr;
        deleteNetworkInterfaceService(&networking);
        deleteWifiService(&wifi);
        deleteHotSpotService(&hotspot);
        QCoreApplication::sendPostedEvents();
        settle();
        TetheringDaemon::deleteProviders();
        ZopDouble::reset();
    }
};

using Step = std::function<void(Application &)>;

} // namespace

Q_DECLARE_METATYPE(Step)

namespace {

/*! What hangs on the providers of the services. */
int hangingOnProviders()
{
    int count = 0;
    const QSet<QObject *> owners = ZopDouble::owners();
    for (const QObject *owner : owners)
        count += owner->children().size();
    return count;
}

/*! What has come of the operation so far. */
QString state(const Application &application)
{
    if (!application.operation)
        return QString();
    return application.operation->hasError() ? application.operation->error().message() : QStringLiteral("pending");
}

WifiConnectionConfig home()
{
    return protectedBy("correct horse", "Home");
}

WifiHotspot car()
{
    WifiHotspot hotspot;
    hotspot.setName(QStringLiteral("Car"));
    return hotspot;
}

/*! Sees in which order a service, its private half and its provider are made. */
template<typename Service, typename Provider>
struct Construction
{
    using Half = PrivateHalfOf<Service>;

    static void see(void *memory, std::size_t size)
    {
        if (size == sizeof(Service) && !s_service)
            s_service = memory;
        else if (size == sizeof(Half) && !s_half)
            s_half = memory;
        else if (size == sizeof(Provider) && s_half && !s_seen) {
            s_seen = true;
            s_backPointer = static_cast<Half *>(s_half)->q;
        }
    }

    static void *s_service;
    static void *s_half;
    static bool s_seen;
    static void *s_backPointer; //!< of the private half, when the provider's memory is asked for
};

template<typename Service, typename Provider>
void *Construction<Service, Provider>::s_service = nullptr;
template<typename Service, typename Provider>
void *Construction<Service, Provider>::s_half = nullptr;
template<typename Service, typename Provider>
bool Construction<Service, Provider>::s_seen = false;
template<typename Service, typename Provider>
void *Construction<Service, Provider>::s_backPointer = nullptr;

template<typename Service, typename Provider>
bool knowsItsServiceFirst(Service *(*make)(), void (*destroy)(Service **))
{
    using Seen = Construction<Service, Provider>;
    Allocations::s_listener = &Seen::see;
    Service *service = nullptr;
    {
        const Allocations watched;
        service = make();
    }
    Allocations::s_listener = nullptr;
    const bool known = Seen::s_seen && Seen::s_service == service && Seen::s_backPointer == service;
    destroy(&service);
    return known;
}

void serviceRows()
{
    const Step nothing = [](Application &) {};
    const Step daemons = [](Application &) {
        NetworkingDaemon::start();
        NetworkingDaemon::addInterface("en0", NetworkingDaemon::wired());
        NetworkingDaemon::addInterface("vlan7", NetworkingDaemon::standingOn("en0"));
        NetworkingDaemon::changeStatus("default_interface", text("en0"));
        NetworkingDaemon::changeStatus("priority", json(R"(["vlan7","en0"])"));
        WifiDaemon::store();
        TetheringDaemon::store();
    };
    for (const bool present : {false, true}) {
        const auto row = [&](const char *name, const Step &call) {
            QTest::addRow("%s, daemons %s", name, present ? "there" : "not there")
                << (present ? daemons : nothing) << call;
        };
        row("networking service", [](Application &a) { a.networking = newNetworkInterfaceService(); });
        row("Wi-Fi service", [](Application &a) { a.wifi = newWifiService(); });
        row("hotspot service", [](Application &a) { a.hotspot = newHotSpotService(); });
    }
}

void wifiRows(bool ready)
{
    const Step prepare = [ready](Application &a) {
        a.wifi = newWifiService();
        if (ready)
            WifiDaemon::start();
    };
    const auto row = [&](const char *name, const Step &call) {
        QTest::addRow("%s, %s", name, ready ? "ready" : "not ready") << prepare << call;
    };
    row("scan", [](Application &a) { a.operation = a.wifi->scan(); });
    row("connectAccessPoint", [config = home()](Application &a) { a.operation = a.wifi->connectAccessPoint(config); });
    row("connectAccessPoint in vain", [](Application &a) { a.operation = a.wifi->connectAccessPoint({}); });
    if (ready)
        row("powerOn", [](Application &a) { a.wifi->powerOn(); });
}

void hotspotRows(bool ready)
{
    const Step prepare = [ready](Application &a) {
        a.hotspot = newHotSpotService();
        if (ready)
            TetheringDaemon::start();
    };
    const auto row = [&](const char *name, const Step &call) {
        QTest::addRow("%s, %s", name, ready ? "ready" : "not ready") << prepare << call;
    };
    row("setEnabled", [](Application &a) { a.operation = a.hotspot->setEnabled(true); });
    row("configuration", [](Application &a) { a.operation = a.hotspot->configuration(); });
    row("setConfiguration", [profile = car()](Application &a) { a.operation = a.hotspot->setConfiguration(profile); });
}

/*! A request for DHCP, for an interface that a networking daemon, if there is one, knows as \a values say. */
void configureRow(const char *name, const ZopDouble::Values *values)
{
    const auto wanted = std::make_shared<NetworkInterface>();
    const Step prepare = [wanted, there = values != nullptr,
                          known = values ? *values : ZopDouble::Values()](Application &a) {
        if (there)
            NetworkingDaemon::start();
        if (!known.isEmpty())
            NetworkingDaemon::addInterface("en0", NetworkingDaemon::with(known, "manual", text("yes")));
        a.networking = newNetworkInterfaceService();
        *wanted = a.networking->interfaces().value(0);
    };
    QTest::addRow("configure, %s", name) << prepare << Step([wanted](Application &a) {
        a.operation = a.networking->configure(*wanted, NetworkInterfaceConfig());
    });
}

} // namespace

/*!
 * Memory that is missing: whoever asked for something hears of it by an exception, and nothing half-built stays.
 *
 * Only what the library itself allocates fails here. Qt ends a program, or damages what it holds, when it cannot
 * allocate for texts and lists (QString, QByteArray, QList, QMap), for meta-types, for an object's own half and for the
 * records of connections and queued calls.
 */
class TestAllocations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup() { m_application.endAll(); }

    void privateHalvesKnowTheirServiceBeforeTheProviderIsMade();
    void failuresLeaveNothingBehind_data();
    void failuresLeaveNothingBehind();

private:
    Application m_application;
};

void TestAllocations::initTestCase()
{
    KrelLogger::setVerbosity(7); // what is logged takes part
    KrelLogger::setSink([](KrelLogger::Level, unsigned short, const QString &) {});
}

void TestAllocations::privateHalvesKnowTheirServiceBeforeTheProviderIsMade()
{
    QVERIFY((knowsItsServiceFirst<NetworkInterfaceService, NetworkInterfaceProviderZop>(
        &newNetworkInterfaceService, &deleteNetworkInterfaceService)));
    QVERIFY((knowsItsServiceFirst<WifiService, WifiProviderZop>(&newWifiService, &deleteWifiService)));
    QVERIFY((knowsItsServiceFirst<HotSpotService, HotspotProviderZop>(&newHotSpotService, &deleteHotSpotService)));
}

void TestAllocations::failuresLeaveNothingBehind_data()
{
    QTest::addColumn<Step>("prepare");
    QTest::addColumn<Step>("call"); // of the library alone, so that every allocation is the library's
    serviceRows();
    for (const bool ready : {false, true}) {
        wifiRows(ready);
        hotspotRows(ready);
    }
    const ZopDouble::Values none;
    const ZopDouble::Values connected = NetworkingDaemon::wired();
    const ZopDouble::Values unconnected = NetworkingDaemon::unplugged();
    configureRow("not ready", nullptr);
    configureRow("refused", &none);
    configureRow("connected", &connected);
    configureRow("not connected", &unconnected);
}

void TestAllocations::failuresLeaveNothingBehind()
{
    QFETCH(Step, prepare);
    QFETCH(Step, call);
    int all = 0;
    QString end;
    // Twice, so that what is made once in a program is there before anything is counted.
    for (int i = 0; i < 2; ++i) {
        prepare(m_application);
        Application::settle();
        {
            const Allocations watched;
            call(m_application);
        }
        all = Allocations::s_made;
        end = state(m_application);
        m_application.endAll();
    }
    QVERIFY(all > 0);
    for (int failing = 1; failing <= all; ++failing) {
        const long outside = Allocations::s_blocks;
        prepare(m_application);
        Application::settle();
        const long blocks = Allocations::s_blocks;
        const int hanging = hangingOnProviders();
        bool failed = false;
        try {
            const Allocations watched(failing);
            call(m_application);
        } catch (const std::bad_alloc &) {
            failed = true;
        }
        const QByteArray which = QByteArray::number(failing) + " of " + QByteArray::number(all);
        QVERIFY2(failed, which.constData());
        Application::settle();
        QVERIFY2(hangingOnProviders() == hanging, which.constData());
        QVERIFY2(Allocations::s_blocks == blocks, which.constData());
        // The same again, with memory.
        call(m_application);
        QCOMPARE(state(m_application), end);
        m_application.endAll();
        QVERIFY2(Allocations::s_blocks == outside, which.constData());
    }
}

QTEST_GUILESS_MAIN(TestAllocations)
#include "tst_allocations.moc"
