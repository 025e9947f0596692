// SPDX-License-Identifier: Apache-2.0
#include "errorcapture.h"
#include "eventlog.h"
#include "eventloop.h"
#include "fakemanager.h"
#include "fakesupplicant.h"
#include "hotspotprofile.h"
#include "hotspotstations.h"
#include "managedhotspot.h"
#include "managerclient.h"
#include "pace.h"
#include "privatebus.h"
#include "radioloan.h"
#include "restoration.h"
#include "world.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

constexpr uint ModeAp = 3;
const QString Wireless = QStringLiteral("802-11-wireless");

QJsonObject lanProfile(const char *ssid, int inactivity = 0)
{
    return {{QStringLiteral("ssid"), QLatin1String(ssid)},
            {QStringLiteral("passphrase"), QStringLiteral("drive safely 8")},
            {QStringLiteral("mhs_band"), QStringLiteral("2.4")},
            {QStringLiteral("max_num_sta"), 5},
            {QStringLiteral("security_type"), QStringLiteral("wpa2")},
            {QStringLiteral("autoshutdown_time"), inactivity},
            {QStringLiteral("privacy"), false},
            {QStringLiteral("block_conn"), false}};
}

QJsonObject profile(const char *ssid = "car", int inactivity = 0)
{
    return HotspotProfile::document(lanProfile(ssid, inactivity));
}

/*! How a request has ended. */
struct Reply
{
    AnswerCall call()
    {
        return [this](const Answer &answer) {
            ++count;
            refusal = answer.refusal;
        };
    }
    QString text() const { return QStringLiteral("%1 %2").arg(refusal.code).arg(refusal.text); }

    int count = 0;
    Refusal refusal;
};

class Loan : public RadioLoan
{
public:
    void lend(const QString &interface) override { told += QStringLiteral("lent ") + interface; }
    bool takeBack(const QString &interface) override
    {
        told += QStringLiteral("back ") + interface;
        return joins;
    }

    QStringList told;
    bool joins = false;
};

/*! What is not as usual. */
struct Setting
{
    QVariantMap radio = {};
    QString version = QStringLiteral("1.42.4");
    QStringList only = {};
    bool remember = false;
};

/*! A manager with one radio, what is tested, and what that has told. */
struct Fixture
{
    explicit Fixture(const Setting &setting = {})
        : manager(setting.version),
          wifi(manager.addWifi(QStringLiteral("wlan0"), setting.radio)),
          client(setting.only),
          restoration(&client, setting.remember, &log)
    {
        pace.hold();
    }

    /*! A profile of the user's, which \a radio joins. */
    QString join(const QString &radio)
    {
        QString home = manager.addProfile(
            {{QStringLiteral("connection"),
              {{QStringLiteral("id"), QStringLiteral("Home")}, {QStringLiteral("type"), Wireless}}}});
        manager.beginActivation(radio, home);
        manager.activate(radio);
        return home;
    }

    void begin()
    {
        QString error;
        if (!manager.start() || !client.start(&error))
            qFatal("no manager: %s", qPrintable(error));
        restoration.setFile(SessionFile(folder.path(), {Service::Tethering}));
        QObject::connect(&world, &World::statusChanged, [this](Service, const ZopChangeset &changes) {
            states += changes.assignments.value(QStringLiteral("state")).toString();
        });
        hotspot =
            std::make_unique<ManagedHotspot>(&client, &restoration, &loan, &world, &pace, &log, nullptr, folder.path());
        states.clear();
    }

    QString asked() const { return QStringLiteral("AddAndActivateConnection2"); }
    QString deactivation() const { return QStringLiteral("DeactivateConnection"); }
    /*! Waits for the manager to be asked \a count times in all, and for the hotspot to hear that it was. */
    bool waitForAsked(int count = 1)
    {
        if (!manager.waitForCalls(asked(), count))
            return false;
        return QTest::qWaitFor([this] { return nm_client_get_active_connections(client.get())->len > 0; });
    }
    BusSettings settings(int call = 0) const { return manager.calls(asked()).at(call).settings(0); }
    /*! What the manager does when the radio can be an access point. */
    void comeUp()
    {
        manager.change(wifi, {{QStringLiteral("Mode"), ModeAp}});
        manager.activate(wifi);
    }
    bool goUp(const QJsonObject &asked = profile(), int count = 1)
    {
        Reply reply;
        hotspot->start(asked, reply.call());
        if (!waitForAsked(count))
            return false;
        comeUp();
        return QTest::qWaitFor([&reply] { return reply.count == 1; }) && !reply.refusal;
    }

    /*! What has been asked to be connected as it was: the profiles. */
    QStringList givenBack() const
    {
        QStringList profiles;
        for (const BusCall &call : manager.calls(QStringLiteral("ActivateConnection")))
            profiles += call.pathAt(0);
        return profiles;
    }
    /*! As when the program ends; the manager does what it is asked for. */
    bool givesAllBack()
    {
        bool isBack = false;
        restoration.giveBack([&isBack] { isBack = true; });
        return QTest::qWaitFor([&isBack, this] {
            if (!givenBack().isEmpty())
                manager.activate(wifi);
            return isBack;
        });
    }
    /*! Whoever asks after the hotspot hears later than that what the supplicant, or the bus, has told by now. */
    static bool hearsStations()
    {
        HotspotStations stations(QStringLiteral("wlan0"));
        bool hasHeard = false;
        QObject::connect(&stations, &HotspotStations::counted, [&hasHeard] { hasHeard = true; });
        QObject::connect(&stations, &HotspotStations::unreadable, [&hasHeard] { hasHeard = true; });
        stations.watch();
        return QTest::qWaitFor([&hasHeard] { return hasHeard; });
    }
    void setLeases(const char *leases) const
    {
        QFile file(folder.filePath(QStringLiteral("dnsmasq-wlan0.leases")));
        if (!file.open(QIODevice::WriteOnly) || file.write(leases) == -1)
            qFatal("no leases");
    }
    /*! Whether the hotspot stops after so many milliseconds, and not before. */
    bool stopsAfter(int milliseconds)
    {
        pace.pass(milliseconds - 1);
        hearEverythingAtOnce(); // the manager has heard everything, too
        if (!manager.calls(deactivation()).isEmpty())
            return false;
        pace.pass(1);
        return manager.waitForCalls(deactivation());
    }
    /*! All that the manager has told by now has come when the event loop goes on. */
    void hearEverythingAtOnce() const
    {
        GErrorKeeper error;
        GVariant *reply =
            g_dbus_connection_call_sync(nm_client_get_dbus_connection(client.get()), "org.freedesktop.NetworkManager",
                                        "/org/freedesktop/NetworkManager", "org.freedesktop.DBus.Properties", "Get",
                                        g_variant_new("(ss)", "org.freedesktop.NetworkManager", "Version"), nullptr,
                                        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
        if (!reply)
            qFatal("%s", error.get()->message);
        g_variant_unref(reply);
    }
    /*! The radio's; empty while it is not known. */
    QString presentProfile() const
    {
        NMActiveConnection *active = nm_device_get_active_connection(client.device(QStringLiteral("wlan0")));
        NMRemoteConnection *profile = active ? nm_active_connection_get_connection(active) : nullptr;
        return profile ? QString::fromUtf8(nm_object_get_path(NM_OBJECT(profile))) : QString();
    }
    bool knows(const QString &profile) const
    {
        return nm_client_get_connection_by_path(client.get(), profile.toUtf8().constData()) != nullptr;
    }
    /*! What follows from all that the manager has told, and what the manager is asked for because of that, is done. */
    void settle() const
    {
        hearEverythingAtOnce();
        runQueued();
        hearEverythingAtOnce();
    }
    NMDeviceState radioState() const { return nm_device_get_state(client.device(QStringLiteral("wlan0"))); }

    QTemporaryDir folder;
    FakeManager manager;
    QString wifi;
    EventLog log {false};
    World world;
    Pace pace {1, 0};
    Loan loan;
    ManagerClient client;
    Restoration restoration;
    std::unique_ptr<ManagedHotspot> hotspot;
    QStringList states;
};

const QStringList Active {QStringLiteral("ACTIVE")};
const QStringList Inactive {QStringLiteral("INACTIVE")};

} // namespace

class ManagedHotspotTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void startsInactiveWithAProfile();
    void asksTheManager();
    void answersWhenItIsUp();
    void needsTheModeOfAnAccessPoint();
    void aSecondStart();
    void stops();
    void stopsWhatDoesNotRun();
    void stopOfAStart();
    void startOfAStop();
    void fails_data();
    void fails();
    void endsBeforeItIsSeen();
    void managerRefuses();
    void cannotBeStopped();
    void endsWhileItIsStopped();
    void managerEndsWhileItIsStopped();
    void endsByItself();
    void radioIsTakenAway_data();
    void radioIsTakenAway();
    void machineSleeps_data();
    void machineSleeps();
    void managerRestarts();
    void managerEndsMeanwhile();
    void managerRestartsMeanwhile();
    void newProfile();
    void newProfileWhileStarting_data();
    void newProfileWhileStarting();
    void newProfileOfTheSameNetwork();
    void freeRadioFirst();
    void radioThatCannot();
    void radioIsOff_data();
    void radioIsOff();
    void goesToAnotherRadio();
    void protectedRadio();
    void radiosThatAreNamed();
    void lendsTheRadio();
    void radioIsUsedOtherwise_data();
    void radioIsUsedOtherwise();
    void givesTheConnectionBack_data();
    void givesTheConnectionBack();
    void givesBackWhatAFailureHasEnded();
    void userEndsIt();
    void formerProfileIsRemoved();
    void stopsWhileTheRadioIsAway();
    void failsWhileTheRadioIsOff();
    void stopsWhileTheManagerIsAway();
    void otherNetworkAndBand();
    void bandsOfTheRadio_data();
    void bandsOfTheRadio();
    void oldManager();
    void saysOnceWhatHasNoEffect();
    void stopsWhenNobodyHasJoined();
    void newProfileCountsAnew_data();
    void newProfileCountsAnew();
    void stopEndsTheCount();
    void leases();
    void leasesThatComeLater_data();
    void leasesThatComeLater();
    void leasesInsteadOfTheSupplicant_data();
    void leasesInsteadOfTheSupplicant();
    void countsNothing();

private:
    /*! A second radio comes, and the hotspot is started there. */
    void startsOnAnother(Fixture *fixture);

    std::unique_ptr<PrivateBus> m_bus;
};

void ManagedHotspotTest::initTestCase()
{
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY2(m_bus->errorString().isEmpty(), qPrintable(m_bus->errorString()));
}

void ManagedHotspotTest::startsInactiveWithAProfile()
{
    Fixture fixture;
    fixture.begin();
    QCOMPARE(fixture.world.status(Service::Tethering).value(QStringLiteral("state")), ZopVariant("INACTIVE", "text"));
    QVERIFY(!HotspotProfile::check(fixture.hotspot->profile()));
}

void ManagedHotspotTest::asksTheManager()
{
    Fixture fixture;
    fixture.manager.addAccessPoint(fixture.wifi, "Home", {{QStringLiteral("Frequency"), 2437U}});
    fixture.begin();
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QVERIFY(fixture.waitForAsked());
    const BusCall call = fixture.manager.calls(fixture.asked()).first();
    QCOMPARE(call.pathAt(1), fixture.wifi);
    QCOMPARE(call.pathAt(2), QStringLiteral("/"));
    QCOMPARE(call.map(3),
             QVariantMap({{QStringLiteral("persist"), QStringLiteral("volatile")},
                          {QStringLiteral("bind-activation"), QStringLiteral("dbus-client")}}));
    const BusSettings settings = call.settings(0);
    QCOMPARE(settings[Wireless][QStringLiteral("ssid")].toByteArray(), QByteArray("car"));
    QCOMPARE(settings[Wireless][QStringLiteral("mode")].toString(), QStringLiteral("ap"));
    QCOMPARE(settings[Wireless][QStringLiteral("band")].toString(), QStringLiteral("bg"));
    QCOMPARE(settings[Wireless][QStringLiteral("channel")].toUInt(), 1U);
    QCOMPARE(settings[QStringLiteral("802-11-wireless-security")][QStringLiteral("psk")].toString(),
             QStringLiteral("drive safely 8"));
    QCOMPARE(settings[QStringLiteral("connection")][QStringLiteral("interface-name")].toString(),
             QStringLiteral("wlan0"));
    QCOMPARE(settings[QStringLiteral("connection")][QStringLiteral("autoconnect")], QVariant(false));
    QCOMPARE(settings[QStringLiteral("ipv4")][QStringLiteral("method")].toString(), QStringLiteral("shared"));
}

void ManagedHotspotTest::answersWhenItIsUp()
{
    Fixture fixture;
    fixture.begin();
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QVERIFY(fixture.waitForAsked());
    fixture.manager.change(fixture.wifi, {{QStringLiteral("Mode"), ModeAp}});
    fixture.manager.setState(fixture.wifi, 90);
    QTRY_COMPARE(fixture.radioState(), NM_DEVICE_STATE_SECONDARIES);
    QCOMPARE(reply.count, 0);
    QCOMPARE(fixture.states, QStringList());
    fixture.manager.setState(fixture.wifi, 100);
    QTRY_COMPARE(reply.count, 1);
    QCOMPARE(reply.refusal.code, 0);
    QCOMPARE(fixture.states, Active);
}

void ManagedHotspotTest::needsTheModeOfAnAccessPoint()
{
    Fixture fixture;
    fixture.begin();
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QVERIFY(fixture.waitForAsked());
    fixture.manager.activate(fixture.wifi);
    QTRY_COMPARE(fixture.radioState(), NM_DEVICE_STATE_ACTIVATED);
    QCOMPARE(reply.count, 0);
    fixture.manager.change(fixture.wifi, {{QStringLiteral("Mode"), ModeAp}});
    QTRY_COMPARE(reply.count, 1);
    QCOMPARE(fixture.states, Active);
}

void ManagedHotspotTest::aSecondStart()
{
    Fixture fixture;
    fixture.begin();
    Reply first;
    Reply second;
    fixture.hotspot->start(profile(), first.call());
    fixture.hotspot->start(profile("another"), second.call());
    QVERIFY(fixture.waitForAsked());
    fixture.comeUp();
    QTRY_COMPARE(second.count, 1);
    QCOMPARE(first.count, 1);
    Reply third;
    fixture.hotspot->start(profile("another"), third.call());
    QCOMPARE(third.count, 1);
    QCOMPARE(third.refusal.code, 0);
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QTRY_COMPARE(stop.count, 1); // comes after whatever the other starts would have asked for
    QCOMPARE(fixture.manager.calls(fixture.asked()).size(), 1);
    QCOMPARE(fixture.states, Active + Inactive);
}

void ManagedHotspotTest::stops()
{
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.hold(fixture.deactivation());
    Reply reply;
    fixture.hotspot->stop(reply.call());
    QVERIFY(fixture.manager.waitForCalls(fixture.deactivation()));
    QCOMPARE(reply.count, 0);
    QCOMPARE(fixture.states, Active);
    Reply again;
    fixture.hotspot->stop(again.call());
    fixture.settle();
    QCOMPARE(fixture.manager.calls(fixture.deactivation()).size(), 1);
    fixture.manager.release(fixture.deactivation());
    QTRY_COMPARE(reply.count, 1);
    QCOMPARE(reply.refusal.code, 0);
    QCOMPARE(again.text(), QStringLiteral("0 "));
    QCOMPARE(fixture.states, Active + Inactive);
    QVERIFY(fixture.goUp(profile(), 2));
}

void ManagedHotspotTest::stopsWhatDoesNotRun()
{
    Fixture fixture;
    fixture.begin();
    Reply reply;
    fixture.hotspot->stop(reply.call());
    QCOMPARE(reply.count, 1);
    QCOMPARE(reply.refusal.code, 0);
    QCOMPARE(fixture.states, QStringList());
}

void ManagedHotspotTest::stopOfAStart()
{
    Fixture fixture;
    fixture.begin();
    fixture.manager.hold(fixture.asked());
    Reply start;
    Reply stop;
    fixture.hotspot->start(profile(), start.call());
    QVERIFY(fixture.manager.waitForCalls(fixture.asked()));
    fixture.hotspot->stop(stop.call());
    QCOMPARE(start.text(), QStringLiteral("13 stopped before it was up"));
    QCOMPARE(stop.count, 0);
    fixture.manager.release(fixture.asked());
    QTRY_COMPARE(stop.count, 1);
    QCOMPARE(stop.refusal.code, 0);
    QCOMPARE(start.count, 1);
    QCOMPARE(fixture.manager.calls(fixture.deactivation()).size(), 1);
    QCOMPARE(fixture.states, QStringList());
}

void ManagedHotspotTest::startOfAStop()
{
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.hold(fixture.deactivation());
    Reply stop;
    Reply start;
    fixture.hotspot->stop(stop.call());
    fixture.hotspot->start(profile("other"), start.call());
    fixture.manager.release(fixture.deactivation());
    QVERIFY(fixture.waitForAsked(2));
    QCOMPARE(stop.count, 1);
    QCOMPARE(fixture.settings(1)[Wireless][QStringLiteral("ssid")].toByteArray(), QByteArray("other"));
    fixture.comeUp();
    QTRY_COMPARE(start.count, 1);
    QCOMPARE(start.refusal.code, 0);
    QCOMPARE(fixture.states, Active + Inactive + Active);
}

void ManagedHotspotTest::fails_data()
{
    QTest::addColumn<uint>("state");
    QTest::addColumn<uint>("reason");
    QTest::addColumn<QString>("expected");
    QTest::addRow("supplicant") << 50U << 11U << "13 the network manager has ended it: supplicant timeout";
    QTest::addRow("DHCP server") << 70U << 18U << "13 the network manager has ended it: shared start failed";
    QTest::addRow("unknown to the library") << 70U << 99U << "13 the network manager has ended it: reason 99";
}

void ManagedHotspotTest::fails()
{
    QFETCH(uint, state);
    QFETCH(uint, reason);
    Fixture fixture;
    const QString wired = fixture.manager.addEthernet(QStringLiteral("eth0"));
    fixture.begin();
    ErrorCapture error;
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QVERIFY(fixture.waitForAsked());
    fixture.manager.setState(wired, 20, 40);          // why another device ends is of no interest
    fixture.manager.setState(fixture.wifi, state, 8); // nor is why it takes a step on its way
    fixture.manager.setState(fixture.wifi, 120, reason);
    fixture.manager.setState(fixture.wifi, 30, 0);
    QTRY_COMPARE(reply.count, 1);
    QTEST(reply.text(), "expected");
    QCOMPARE(fixture.states, QStringList());
    const QByteArray line = "morvek-hostd: the hotspot does not start: " + reply.refusal.text.toUtf8() + '\n';
    QVERIFY2(error.text().contains(line), error.text().constData());
    QVERIFY(fixture.goUp(profile(), 2));
}

void ManagedHotspotTest::endsBeforeItIsSeen()
{
    Fixture fixture;
    fixture.begin();
    fixture.manager.hold(fixture.asked());
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QVERIFY(fixture.manager.waitForCalls(fixture.asked()));
    fixture.manager.release(fixture.asked());
    fixture.manager.setStates(fixture.wifi, {{50, 0}, {120, 11}, {30, 0}});
    fixture.hearEverythingAtOnce();
    QTRY_COMPARE(reply.count, 1);
    QCOMPARE(reply.text(), QStringLiteral("13 the network manager has ended it: supplicant timeout"));
}

/*! For another reason than that for which the run before has ended. */
void ManagedHotspotTest::managerRefuses()
{
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.deactivate(fixture.wifi, 39);
    QTRY_COMPARE(fixture.states, Active + Inactive);
    fixture.loan.told.clear();
    fixture.manager.refuse(fixture.asked(), QStringLiteral("org.freedesktop.NetworkManager.PermissionDenied"),
                           QStringLiteral("Not authorized to share"));
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QTRY_COMPARE(reply.count, 1);
    QCOMPARE(reply.text(), QStringLiteral("9 Not authorized to share"));
    QCOMPARE(fixture.loan.told, QStringList({QStringLiteral("lent wlan0"), QStringLiteral("back wlan0")}));
    fixture.manager.allow(fixture.asked());
    QVERIFY(fixture.goUp(profile(), 3));
}

void ManagedHotspotTest::cannotBeStopped()
{
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.refuse(fixture.deactivation(), QStringLiteral("org.freedesktop.NetworkManager.PermissionDenied"),
                           QStringLiteral("No"), 1);
    Reply reply;
    fixture.hotspot->stop(reply.call());
    QTRY_COMPARE(reply.count, 1);
    QCOMPARE(reply.text(), QStringLiteral("9 No"));
    QCOMPARE(fixture.states, Active);
    Reply start; // as it is up
    fixture.hotspot->start(profile(), start.call());
    QCOMPARE(start.count, 1);
    fixture.manager.setState(fixture.wifi, 20, 2);
    QTRY_COMPARE(fixture.states, Active + Inactive);
    fixture.manager.setState(fixture.wifi, 30);
    QVERIFY(fixture.waitForAsked(2));
    fixture.comeUp();
    QTRY_COMPARE(fixture.states, Active + Inactive + Active);
    Reply again;
    fixture.hotspot->stop(again.call());
    QTRY_COMPARE(again.count, 1);
    QCOMPARE(again.refusal.code, 0);
    QCOMPARE(fixture.states, Active + Inactive + Active + Inactive);
}

/*! The manager's objection to stopping it is then of no interest. */
void ManagedHotspotTest::endsWhileItIsStopped()
{
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.hold(fixture.deactivation());
    ErrorCapture error;
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QVERIFY(fixture.manager.waitForCalls(fixture.deactivation()));
    fixture.manager.setStates(fixture.wifi, {{110, 39}, {30, 39}});
    QTRY_COMPARE(stop.count, 1);
    fixture.manager.refuse(fixture.deactivation(), QStringLiteral("org.freedesktop.NetworkManager.ConnectionNotActive"),
                           QStringLiteral("It is not active"));
    fixture.manager.release(fixture.deactivation());
    fixture.settle();
    QCOMPARE(stop.text(), QStringLiteral("0 "));
    QCOMPARE(error.text(), QByteArray());
    QVERIFY(fixture.goUp(profile(), 2));
}

void ManagedHotspotTest::managerEndsWhileItIsStopped()
{
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.hold(fixture.deactivation());
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QVERIFY(fixture.manager.waitForCalls(fixture.deactivation()));
    fixture.manager.stop();
    QTRY_COMPARE(stop.count, 1);
    QCOMPARE(stop.text(), QStringLiteral("10 the network manager does not run"));
}

void ManagedHotspotTest::endsByItself()
{
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    ErrorCapture error;
    fixture.manager.setState(fixture.wifi, 110, 39); // as the user asks for with another program
    QTRY_COMPARE(fixture.radioState(), NM_DEVICE_STATE_DEACTIVATING);
    QCOMPARE(fixture.states, Active);
    fixture.manager.setState(fixture.wifi, 30);
    QTRY_COMPARE(fixture.states, Active + Inactive);
    QCOMPARE(error.text(),
             QByteArray("morvek-hostd: the hotspot has ended: the network manager has ended it: user requested\n"));
    QCOMPARE(fixture.loan.told.last(), QStringLiteral("back wlan0"));
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QCOMPARE(stop.count, 1);
    QVERIFY(fixture.goUp(profile("again"), 2));
}

void ManagedHotspotTest::radioIsTakenAway_data()
{
    QTest::addColumn<bool>("isToldAtOnce");
    QTest::addRow("one after the other") << false;
    QTest::addRow("at once") << true;
}

/*! Meanwhile nobody can join it, and that does not end it. */
void ManagedHotspotTest::radioIsTakenAway()
{
    QFETCH(bool, isToldAtOnce);
    Fixture fixture;
    fixture.begin();
    fixture.setLeases("");
    QVERIFY(fixture.goUp(profile("car", 600)));
    QVERIFY(fixture.hearsStations());
    fixture.manager.setState(fixture.wifi, 10, 36); // as the manager tells it before
    if (!isToldAtOnce)
        QTRY_COMPARE(fixture.states, Active + Inactive);
    fixture.manager.removeDevice(fixture.wifi);
    fixture.hearEverythingAtOnce();
    QTRY_COMPARE(fixture.states, Active + Inactive);
    fixture.pace.pass(3600000);
    fixture.hotspot->setProfile(profile("car", 300));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(3600000);
    fixture.wifi = fixture.manager.addWifi(QStringLiteral("wlan0"));
    QVERIFY(fixture.waitForAsked(2));
    QCOMPARE(fixture.settings(1)[Wireless][QStringLiteral("ssid")].toByteArray(), QByteArray("car"));
    fixture.comeUp();
    QTRY_COMPARE(fixture.states, Active + Inactive + Active);
}

void ManagedHotspotTest::machineSleeps_data()
{
    QTest::addColumn<bool>("isRadioFirst");
    QTest::addColumn<bool>("isToldAtOnce");
    QTest::addRow("one after the other") << false << false;
    QTest::addRow("the radio is down first") << true << false;
    QTest::addRow("at once, when it has woken") << false << true; // this program has slept, too
}

void ManagedHotspotTest::machineSleeps()
{
    QFETCH(bool, isRadioFirst);
    QFETCH(bool, isToldAtOnce);
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    ErrorCapture error;
    const auto tell = [&fixture](uint state) {
        fixture.manager.change(FakeManager::managerPath(), {{QStringLiteral("State"), state}});
    };
    fixture.manager.setState(fixture.wifi, 110, 37);
    if (isRadioFirst) {
        fixture.manager.setStates(fixture.wifi, {{30, 37}, {10, 37}});
        tell(10);
        fixture.hearEverythingAtOnce();
    } else {
        tell(10);
        fixture.manager.setState(fixture.wifi, 30, 37);
    }
    if (!isToldAtOnce) {
        QTRY_COMPARE(fixture.states, Active + Inactive);
        fixture.settle();
        QCOMPARE(fixture.manager.calls(fixture.asked()).size(), 1);
    }
    if (!isRadioFirst)
        fixture.manager.setState(fixture.wifi, 10, 37);
    tell(20);
    fixture.manager.setStates(fixture.wifi, {{20, 2}, {30, 42}});
    fixture.hearEverythingAtOnce();
    QVERIFY(fixture.waitForAsked(2));
    QCOMPARE(error.text().count('\n'), 1);
    fixture.comeUp();
    QTRY_COMPARE(fixture.states, Active + Inactive + Active);
    QCOMPARE(fixture.loan.told, QStringList(QStringLiteral("lent wlan0")));
}

void ManagedHotspotTest::managerRestarts()
{
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.stop();
    QTRY_COMPARE(fixture.states, Active + Inactive);
    Reply away;
    fixture.hotspot->start(profile(), away.call());
    QCOMPARE(away.text(), QStringLiteral("10 the network manager does not run"));
    fixture.manager.setState(fixture.wifi, 110);
    fixture.manager.forgetCalls();
    QVERIFY(fixture.manager.start());
    QTRY_VERIFY(fixture.client.device(QStringLiteral("wlan0")));
    fixture.settle();
    QCOMPARE(fixture.manager.calls(fixture.asked()).size(), 0); // until that has ended
    fixture.manager.setState(fixture.wifi, 100);
    QVERIFY(fixture.waitForAsked());
    fixture.comeUp();
    QTRY_COMPARE(fixture.states, Active + Inactive + Active);
}

void ManagedHotspotTest::managerEndsMeanwhile()
{
    Fixture fixture;
    fixture.begin();
    fixture.manager.hold(fixture.asked());
    Reply start;
    fixture.hotspot->start(profile(), start.call());
    QVERIFY(fixture.manager.waitForCalls(fixture.asked()));
    fixture.manager.stop();
    QTRY_COMPARE(start.count, 1);
    QCOMPARE(start.refusal.code, int(Refusal::ManagerGone));
    QCOMPARE(fixture.states, QStringList());
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QCOMPARE(stop.count, 1);
    QCOMPARE(stop.refusal.code, int(Refusal::ManagerGone));
}

/*! What it answers to a request of before is of no interest then. */
void ManagedHotspotTest::managerRestartsMeanwhile()
{
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.hold(fixture.asked());
    fixture.hotspot->setProfile(profile("Back seat"));
    QVERIFY(fixture.manager.waitForCalls(fixture.asked(), 2));
    ErrorCapture error;
    fixture.manager.stop();
    QTRY_VERIFY(!fixture.client.isRunning());
    fixture.manager.setState(fixture.wifi, 30);
    fixture.manager.release(fixture.asked());
    fixture.manager.forgetCalls();
    QVERIFY(fixture.manager.start());
    QVERIFY(fixture.waitForAsked());
    fixture.comeUp();
    QTRY_COMPARE(fixture.states, Active + Inactive + Active);
    QCOMPARE(error.text(), QByteArray("morvek-hostd: the hotspot does not start: the network manager does not run\n"));
}

void ManagedHotspotTest::newProfile()
{
    Fixture fixture;
    fixture.begin();
    fixture.setLeases("");
    QVERIFY(fixture.goUp(profile("car", 600)));
    QVERIFY(fixture.hearsStations());
    fixture.manager.addWifi(QStringLiteral("wlan1")); // which would be the better one
    QTRY_VERIFY(fixture.client.device(QStringLiteral("wlan1")));
    fixture.manager.hold(fixture.deactivation());
    fixture.hotspot->setProfile(profile("Back seat"));
    fixture.pace.pass(3600000); // which does not count for what ends
    fixture.manager.release(fixture.deactivation());
    QVERIFY(fixture.waitForAsked(2));
    QCOMPARE(fixture.settings(1)[Wireless][QStringLiteral("ssid")].toByteArray(), QByteArray("Back seat"));
    QCOMPARE(fixture.manager.calls(fixture.deactivation()).size(), 1);
    fixture.comeUp();
    QTRY_COMPARE(fixture.states, Active + Inactive + Active);
    QCOMPARE(fixture.loan.told, QStringList(QStringLiteral("lent wlan0")));
}

void ManagedHotspotTest::newProfileWhileStarting_data()
{
    QTest::addColumn<bool>("hasBegun");
    QTest::addRow("asked for") << false;
    QTest::addRow("begun") << true;
}

void ManagedHotspotTest::newProfileWhileStarting()
{
    QFETCH(bool, hasBegun);
    Fixture fixture;
    fixture.begin();
    Reply start;
    fixture.hotspot->start(profile(), start.call());
    if (hasBegun) {
        QVERIFY(fixture.waitForAsked());
        fixture.manager.setState(fixture.wifi, 50);
        QTRY_COMPARE(fixture.radioState(), NM_DEVICE_STATE_CONFIG);
    }
    fixture.hotspot->setProfile(profile("Back seat"));
    QVERIFY(fixture.waitForAsked(2));
    QCOMPARE(fixture.settings(1)[Wireless][QStringLiteral("ssid")].toByteArray(), QByteArray("Back seat"));
    QCOMPARE(start.count, 0);
    fixture.comeUp();
    QTRY_COMPARE(start.count, 1);
    QCOMPARE(start.refusal.code, 0);
    QCOMPARE(fixture.states, Active);
}

void ManagedHotspotTest::newProfileOfTheSameNetwork()
{
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.hotspot->setProfile(profile("car", 300));
    QCOMPARE(fixture.hotspot->profile(), profile("car", 300));
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QTRY_COMPARE(stop.count, 1);
    QCOMPARE(fixture.manager.calls(fixture.asked()).size(), 1);
    QCOMPARE(fixture.states, Active + Inactive);
}

/*! Of two that are free, the one that applications join networks with comes last. */
void ManagedHotspotTest::freeRadioFirst()
{
    Fixture fixture;
    const QString second = fixture.manager.addWifi(QStringLiteral("wlan1"));
    fixture.begin();
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QVERIFY(fixture.waitForAsked());
    QCOMPARE(fixture.manager.calls(fixture.asked()).first().pathAt(1), second);
    fixture.hotspot->stop(reply.call());
    QTRY_COMPARE(reply.count, 2);
    fixture.join(second);
    QTRY_COMPARE(int(nm_device_get_state(fixture.client.device(QStringLiteral("wlan1")))), 100);
    fixture.hotspot->start(profile(), reply.call());
    QVERIFY(fixture.waitForAsked(2));
    QCOMPARE(fixture.manager.calls(fixture.asked()).at(1).pathAt(1), fixture.wifi);
}

void ManagedHotspotTest::radioThatCannot()
{
    Fixture fixture({{{QStringLiteral("WirelessCapabilities"), 0x17bfU}}}); // all but access points
    fixture.begin();
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QCOMPARE(reply.text(), QStringLiteral("3 no radio is there that can be an access point"));
}

void ManagedHotspotTest::radioIsOff_data()
{
    QTest::addColumn<QString>("property");
    QTest::addRow("by the manager") << QStringLiteral("WirelessEnabled");
    QTest::addRow("by the machine's own switch") << QStringLiteral("WirelessHardwareEnabled");
}

void ManagedHotspotTest::radioIsOff()
{
    QFETCH(QString, property);
    Fixture fixture;
    fixture.manager.setState(fixture.wifi, 10);
    const QString better = fixture.manager.addWifi(QStringLiteral("wlan1"));
    fixture.manager.setState(better, 20);
    fixture.manager.change(FakeManager::managerPath(), {{property, false}});
    fixture.begin();
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QCOMPARE(reply.text(), QStringLiteral("7 the radio is off"));
    fixture.manager.setState(better, 10);
    QTRY_COMPARE(nm_device_get_state(fixture.client.device(QStringLiteral("wlan1"))), NM_DEVICE_STATE_UNMANAGED);
    fixture.hotspot->start(profile(), reply.call());
    QCOMPARE(reply.text(), QStringLiteral("11 the network manager leaves wlan1 alone"));
}

/*! The one that it had cannot be used. */
void ManagedHotspotTest::goesToAnotherRadio()
{
    Fixture fixture;
    const QString second = fixture.manager.addWifi(QStringLiteral("wlan1"));
    fixture.begin();
    Reply first;
    fixture.hotspot->start(profile(), first.call());
    QVERIFY(fixture.waitForAsked());
    fixture.manager.change(second, {{QStringLiteral("Mode"), ModeAp}});
    fixture.manager.activate(second);
    QTRY_COMPARE(fixture.states, Active);
    fixture.manager.setState(second, 10);
    QTRY_COMPARE(fixture.states, Active + Inactive);
    Reply reply;
    fixture.hotspot->start(profile("other"), reply.call());
    QVERIFY(fixture.waitForAsked(2));
    QCOMPARE(fixture.manager.calls(fixture.asked()).at(1).pathAt(1), fixture.wifi);
    QCOMPARE(fixture.settings(1)[Wireless][QStringLiteral("ssid")].toByteArray(), QByteArray("other"));
    QCOMPARE(fixture.loan.told,
             QStringList({QStringLiteral("lent wlan1"), QStringLiteral("back wlan1"), QStringLiteral("lent wlan0")}));
}

/*! Though that one is connected. */
void ManagedHotspotTest::startsOnAnother(Fixture *fixture)
{
    const QString other = fixture->manager.addWifi(QStringLiteral("wlan1"));
    fixture->join(other);
    QTRY_VERIFY(fixture->client.device(QStringLiteral("wlan1")));
    Reply reply;
    fixture->hotspot->start(profile(), reply.call());
    QVERIFY(fixture->waitForAsked());
    QCOMPARE(fixture->manager.calls(fixture->asked()).first().pathAt(1), other);
    QCOMPARE(fixture->manager.calls(fixture->asked()).size(), 1);
}

void ManagedHotspotTest::protectedRadio()
{
    Fixture fixture;
    fixture.begin();
    fixture.client.protect({QStringLiteral("wlan0")});
    Reply refused;
    fixture.hotspot->start(profile(), refused.call());
    QCOMPARE(refused.text(), QStringLiteral("12 \"wlan0\" carries your remote session: --force has it touched"));
    startsOnAnother(&fixture);
}

void ManagedHotspotTest::radiosThatAreNamed()
{
    Fixture fixture({{}, QStringLiteral("1.42.4"), {QStringLiteral("wlan1")}});
    fixture.begin();
    Reply refused;
    fixture.hotspot->start(profile(), refused.call());
    QCOMPARE(refused.text(), QStringLiteral("3 no radio is there that can be an access point"));
    startsOnAnother(&fixture);
}

void ManagedHotspotTest::lendsTheRadio()
{
    Fixture fixture;
    fixture.join(fixture.wifi);
    fixture.begin();
    fixture.loan.joins = true;
    QVERIFY(fixture.goUp());
    QCOMPARE(fixture.loan.told, QStringList(QStringLiteral("lent wlan0")));
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QTRY_COMPARE(stop.count, 1);
    QTRY_COMPARE(fixture.loan.told, QStringList({QStringLiteral("lent wlan0"), QStringLiteral("back wlan0")}));
    fixture.settle();
    QCOMPARE(fixture.givenBack(), QStringList()); // it joins what applications want
}

void ManagedHotspotTest::radioIsUsedOtherwise_data()
{
    QTest::addColumn<bool>("isToldAtOnce");
    QTest::addRow("one after the other") << false;
    QTest::addRow("at once") << true;
}

void ManagedHotspotTest::radioIsUsedOtherwise()
{
    QFETCH(bool, isToldAtOnce);
    Fixture fixture;
    fixture.join(fixture.wifi);
    fixture.begin();
    QVERIFY(fixture.goUp());
    if (isToldAtOnce)
        fixture.manager.hold(QStringLiteral("GetSettings")); // before that it is not known with what
    ErrorCapture error;
    fixture.manager.deactivate(fixture.wifi, 60);
    if (!isToldAtOnce)
        QTRY_COMPARE(fixture.states, Active + Inactive);
    const QString other = fixture.join(fixture.wifi);
    fixture.hearEverythingAtOnce();
    QTRY_COMPARE(fixture.states, Active + Inactive);
    runQueued();
    QCOMPARE(error.text(),
             QByteArray("morvek-hostd: the hotspot has ended: the network manager has ended it: new activation\n"));
    fixture.manager.release(QStringLiteral("GetSettings"));
    QTRY_COMPARE(fixture.presentProfile(), other);
    QCOMPARE(fixture.loan.told.last(), QStringLiteral("back wlan0"));
    QVERIFY(fixture.givesAllBack());
    QCOMPARE(fixture.givenBack(), QStringList());
}

void ManagedHotspotTest::givesTheConnectionBack_data()
{
    QTest::addColumn<bool>("remember");
    QTest::addRow("usually") << false;
    QTest::addRow("where what was asked for stays") << true;
}

void ManagedHotspotTest::givesTheConnectionBack()
{
    QFETCH(bool, remember);
    Setting setting;
    setting.remember = remember;
    Fixture fixture(setting);
    const QString home = fixture.join(fixture.wifi);
    fixture.begin();
    QVERIFY(fixture.goUp());
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QVERIFY(fixture.manager.waitForCalls(QStringLiteral("ActivateConnection")));
    QCOMPARE(stop.text(), QStringLiteral("0 "));
    QCOMPARE(fixture.givenBack(), QStringList(home));
    QCOMPARE(fixture.manager.calls(QStringLiteral("ActivateConnection")).first().pathAt(1), fixture.wifi);
    fixture.manager.activate(fixture.wifi);
    QTRY_COMPARE(fixture.radioState(), NM_DEVICE_STATE_ACTIVATED);
    // Once.
    QVERIFY(fixture.givesAllBack());
    QCOMPARE(fixture.givenBack(), QStringList(home));
}

void ManagedHotspotTest::givesBackWhatAFailureHasEnded()
{
    Fixture fixture;
    const QString home = fixture.join(fixture.wifi);
    fixture.begin();
    fixture.manager.hold(fixture.asked());
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QVERIFY(fixture.manager.waitForCalls(fixture.asked()));
    fixture.manager.setStates(fixture.wifi, {{110, 60}, {30, 60}}); // to make room for the hotspot
    fixture.manager.release(fixture.asked());
    QVERIFY(fixture.waitForAsked());
    fixture.manager.setState(fixture.wifi, 120, 11);
    fixture.manager.setState(fixture.wifi, 30, 0);
    QTRY_COMPARE(reply.count, 1);
    QVERIFY(reply.refusal);
    QVERIFY(fixture.manager.waitForCalls(QStringLiteral("ActivateConnection")));
    QCOMPARE(fixture.givenBack(), QStringList(home));
}

void ManagedHotspotTest::userEndsIt()
{
    Fixture fixture;
    fixture.join(fixture.wifi);
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.deactivate(fixture.wifi, 39);
    QTRY_COMPARE(fixture.states, Active + Inactive);
    QVERIFY(fixture.givesAllBack());
    QCOMPARE(fixture.givenBack(), QStringList());
}

void ManagedHotspotTest::formerProfileIsRemoved()
{
    Fixture fixture;
    const QString home = fixture.join(fixture.wifi);
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.removeProfile(home);
    QTRY_VERIFY(!fixture.knows(home));
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QTRY_COMPARE(stop.count, 1);
    QCOMPARE(stop.text(), QStringLiteral("0 "));
    QVERIFY(fixture.givesAllBack());
    QCOMPARE(fixture.givenBack(), QStringList());
    QVERIFY(fixture.goUp(profile(), 2));
}

/*! What was there before is then given back at the end, unless the manager has done so by itself. */
void ManagedHotspotTest::stopsWhileTheRadioIsAway()
{
    Fixture fixture;
    const QString home = fixture.join(fixture.wifi);
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.setState(fixture.wifi, 10, 36); // as the manager tells it before
    fixture.manager.removeDevice(fixture.wifi);
    QTRY_COMPARE(fixture.states, Active + Inactive);
    QTRY_VERIFY(!fixture.client.device(QStringLiteral("wlan0")));
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QCOMPARE(stop.text(), QStringLiteral("0 "));
    QCOMPARE(fixture.loan.told.last(), QStringLiteral("back wlan0"));
    fixture.wifi = fixture.manager.addWifi(QStringLiteral("wlan0"));
    QTRY_VERIFY(fixture.client.device(QStringLiteral("wlan0")));
    QVERIFY(fixture.givesAllBack());
    QCOMPARE(fixture.givenBack(), QStringList(home));
    QCOMPARE(fixture.manager.calls(fixture.asked()).size(), 1);
}

/*! Who was told so has to start it again. */
void ManagedHotspotTest::failsWhileTheRadioIsOff()
{
    Fixture fixture;
    const QString home = fixture.join(fixture.wifi);
    fixture.begin();
    QVERIFY(fixture.goUp());
    const auto setEnabled = [&fixture](bool enabled) {
        fixture.manager.change(FakeManager::managerPath(), {{QStringLiteral("WirelessEnabled"), enabled}});
    };
    setEnabled(false);
    fixture.manager.setState(fixture.wifi, 20);
    QTRY_COMPARE(fixture.states, Active + Inactive);
    Reply start;
    fixture.hotspot->start(profile(), start.call());
    QCOMPARE(start.text(), QStringLiteral("7 the radio is off"));
    QCOMPARE(fixture.loan.told.last(), QStringLiteral("back wlan0"));
    fixture.settle();
    QCOMPARE(fixture.givenBack(), QStringList());
    setEnabled(true);
    fixture.manager.setState(fixture.wifi, 30);
    fixture.settle();
    QCOMPARE(fixture.manager.calls(fixture.asked()).size(), 1);
    QVERIFY(fixture.givesAllBack());
    QCOMPARE(fixture.givenBack(), QStringList(home));
}

void ManagedHotspotTest::stopsWhileTheManagerIsAway()
{
    Fixture fixture;
    const QString home = fixture.join(fixture.wifi);
    fixture.begin();
    QVERIFY(fixture.goUp());
    fixture.manager.stop();
    QTRY_COMPARE(fixture.states, Active + Inactive);
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QCOMPARE(stop.text(), QStringLiteral("10 the network manager does not run"));
    QCOMPARE(fixture.loan.told.last(), QStringLiteral("back wlan0"));
    fixture.manager.setState(fixture.wifi, 30);
    QVERIFY(fixture.manager.start());
    QTRY_VERIFY(fixture.client.device(QStringLiteral("wlan0")));
    QTRY_VERIFY(fixture.knows(home));
    QVERIFY(fixture.givesAllBack());
    QCOMPARE(fixture.givenBack(), QStringList(home));
    QCOMPARE(fixture.manager.calls(fixture.asked()).size(), 1);
}

void ManagedHotspotTest::otherNetworkAndBand()
{
    Fixture fixture({{{QStringLiteral("WirelessCapabilities"), 0x13ffU}}}); // without 5 GHz
    const QString wired = fixture.manager.addEthernet(QStringLiteral("eth0"));
    fixture.manager.setIp4(wired, {QStringLiteral("192.168.0.7/24")});
    QJsonObject lan = lanProfile("car");
    lan.insert(QStringLiteral("mhs_band"), QStringLiteral("5.0"));
    fixture.begin();
    ErrorCapture error;
    Reply reply;
    fixture.hotspot->start(HotspotProfile::document(lan), reply.call());
    QVERIFY(fixture.waitForAsked());
    QCOMPARE(fixture.settings()[Wireless][QStringLiteral("band")].toString(), QStringLiteral("bg"));
    QVERIFY(error.text().contains("morvek-hostd: the hotspot is on channel 6: the radio has no 5 GHz band\n"
                                  "morvek-hostd: the hotspot has the address 10.42.0.1/24: another interface is in the "
                                  "network of 192.168.0.1/24\n"));
}

void ManagedHotspotTest::bandsOfTheRadio_data()
{
    QTest::addColumn<uint>("capabilities");
    QTest::addColumn<QString>("expected");
    QTest::addRow("not told") << 0x10ffU << QStringLiteral("bg");
    QTest::addRow("5 GHz") << 0x15ffU << QStringLiteral("a");
}

void ManagedHotspotTest::bandsOfTheRadio()
{
    QFETCH(uint, capabilities);
    Fixture fixture({{{QStringLiteral("WirelessCapabilities"), capabilities}}});
    fixture.begin();
    Reply reply;
    fixture.hotspot->start(profile(), reply.call());
    QVERIFY(fixture.waitForAsked());
    QTEST(fixture.settings()[Wireless][QStringLiteral("band")].toString(), "expected");
}

void ManagedHotspotTest::oldManager()
{
    Fixture fixture({{}, QStringLiteral("1.26.4")});
    fixture.begin();
    QJsonObject lan = lanProfile("car");
    lan.insert(QStringLiteral("privacy"), true);
    ErrorCapture error;
    Reply reply;
    fixture.hotspot->start(HotspotProfile::document(lan), reply.call());
    QVERIFY(fixture.waitForAsked());
    QVERIFY(!fixture.settings()[Wireless].contains(QStringLiteral("ap-isolation")));
    QVERIFY(error.text().contains("morvek-hostd: \"privacy\" of the hotspot's profile has no effect: network managers "
                                  "before 1.28 cannot part clients from one another\n"));
}

void ManagedHotspotTest::saysOnceWhatHasNoEffect()
{
    Fixture fixture({{}, QStringLiteral("1.26.4")});
    fixture.manager.setIp4(fixture.wifi, {QStringLiteral("192.168.0.7/24")}); // its own network is not in its way
    fixture.begin();
    ErrorCapture error;
    QVERIFY(fixture.goUp());
    fixture.hotspot->setProfile(profile("Back seat"));
    QVERIFY(fixture.waitForAsked(2));
    QCOMPARE(
        error.text(),
        QByteArray("morvek-hostd: \"max_num_sta\", \"block_conn\", \"dhcp_lease_time\" and \"wantype\" of the "
                   "hotspot's profile are kept, and have no effect: the network manager knows nothing of the kind\n"));
}

void ManagedHotspotTest::stopsWhenNobodyHasJoined()
{
    FakeSupplicant supplicant;
    QVERIFY(supplicant.start());
    Fixture fixture;
    fixture.begin();
    supplicant.setStations(1, QStringLiteral("StaAuthorized"));
    QVERIFY(fixture.goUp(profile("car", 600)));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(3600000);
    supplicant.setStations(0, QStringLiteral("StaDeauthorized"));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(599999);
    supplicant.setStations(2, QStringLiteral("StationAdded")); // the last moment
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(3600000);
    supplicant.setStations(0, QStringLiteral("StationRemoved"));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(100000);
    supplicant.setStations(0, QStringLiteral("StationRemoved")); // which changes nothing
    QVERIFY(fixture.hearsStations());
    QVERIFY(fixture.stopsAfter(500000));
    QTRY_COMPARE(fixture.states, Active + Inactive);
}

void ManagedHotspotTest::newProfileCountsAnew_data()
{
    QTest::addColumn<bool>("tellsStations");
    QTest::addRow("stations") << true;
    QTest::addRow("leases") << false;
}

void ManagedHotspotTest::newProfileCountsAnew()
{
    QFETCH(bool, tellsStations);
    FakeSupplicant supplicant;
    QVERIFY(!tellsStations || supplicant.start());
    Fixture fixture;
    fixture.begin();
    fixture.setLeases("");
    QVERIFY(fixture.goUp(profile("car", 600)));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(599999);
    fixture.hotspot->setProfile(profile("car", 0));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(3600000);
    fixture.hotspot->setProfile(profile("car", 300));
    QVERIFY(fixture.hearsStations());
    QVERIFY(fixture.stopsAfter(300000));
}

/*! What has been counted before is not counted in the next run. */
void ManagedHotspotTest::stopEndsTheCount()
{
    FakeSupplicant supplicant;
    QVERIFY(supplicant.start());
    Fixture fixture;
    fixture.begin();
    QVERIFY(fixture.goUp(profile("car", 600)));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(599999);
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QTRY_COMPARE(stop.count, 1);
    fixture.manager.forgetCalls();
    QVERIFY(fixture.goUp(profile("car", 600)));
    QVERIFY(fixture.hearsStations());
    QVERIFY(fixture.stopsAfter(600000));
}

void ManagedHotspotTest::leases()
{
    Fixture fixture;
    fixture.begin();
    fixture.setLeases("0 02:00:00:00:04:00 192.168.0.188 * 01:02:00:00:00:04:00\n"); // without an end
    QVERIFY(fixture.goUp(profile("car", 603)));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(3600000);
    const QByteArray hour = QByteArray::number(QDateTime::currentSecsSinceEpoch() + 3600);
    fixture.setLeases(QByteArray("duid 00:01\n" + hour + " 02:00:00:00:04:00 192.168.0.188 * *\n").constData());
    fixture.pace.pass(3600000);
    fixture.setLeases("1000 02:00:00:00:04:00 192.168.0.188 * 01:02:00:00:00:04:00\nduid 00:01\n");
    QVERIFY(fixture.stopsAfter(603000));
    QTRY_COMPARE(fixture.states, Active + Inactive);
}

void ManagedHotspotTest::leasesThatComeLater_data()
{
    QTest::addColumn<int>("after");
    QTest::addColumn<int>("lines");
    QTest::addRow("in a moment") << 1 << 0;
    QTest::addRow("in an hour") << 3600000 << 1;
}

void ManagedHotspotTest::leasesThatComeLater()
{
    QFETCH(int, after);
    Fixture fixture;
    fixture.begin();
    ErrorCapture error;
    QVERIFY(fixture.goUp(profile("car", 600)));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(after);
    fixture.setLeases("");
    QVERIFY(fixture.stopsAfter(after == 1 ? 599999 : 600000)); // those of the hour do not count
    QTEST(error.text().count("the hotspot does not stop by itself"), "lines");
}

void ManagedHotspotTest::leasesInsteadOfTheSupplicant_data()
{
    QTest::addColumn<bool>("isAllowedAgain");
    QTest::addColumn<int>("time");
    QTest::addRow("for good") << false << 300000;
    QTest::addRow("for a while") << true << 600000; // nobody knows who was there then
}

void ManagedHotspotTest::leasesInsteadOfTheSupplicant()
{
    QFETCH(bool, isAllowedAgain);
    QFETCH(int, time);
    FakeSupplicant supplicant;
    QVERIFY(supplicant.start());
    Fixture fixture;
    fixture.begin();
    fixture.setLeases("");
    supplicant.setStations(1, QStringLiteral("StaAuthorized"));
    QVERIFY(fixture.goUp(profile("car", 600)));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(3600000);
    supplicant.refuse(QStringLiteral("Get"), QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"),
                      QStringLiteral("no"));
    supplicant.setStations(2, QStringLiteral("StaAuthorized"));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(300000);
    if (isAllowedAgain)
        supplicant.allow(QStringLiteral("Get"));
    supplicant.setStations(0, QStringLiteral("StaDeauthorized"));
    QVERIFY(fixture.hearsStations());
    QVERIFY(fixture.stopsAfter(time));
}

void ManagedHotspotTest::countsNothing()
{
    Fixture fixture;
    fixture.begin();
    ErrorCapture error;
    QVERIFY(fixture.goUp(profile("car", 1)));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(1000);
    const QByteArray line = "morvek-hostd: the hotspot does not stop by itself: neither the supplicant nor \""
        + QFile::encodeName(fixture.folder.path()) + "/dnsmasq-wlan0.leases\" tells who has joined it\n";
    QCOMPARE(error.text().count(line), 1);
    fixture.hotspot->setProfile(profile("car", 2));
    QVERIFY(fixture.hearsStations());
    fixture.pace.pass(3600000);
    Reply stop;
    fixture.hotspot->stop(stop.call());
    QTRY_COMPARE(stop.count, 1);
    QCOMPARE(fixture.manager.calls(fixture.deactivation()).size(), 1);
    QCOMPARE(error.text().count(line), 1);
}

QTEST_GUILESS_MAIN(ManagedHotspotTest)
#include "tst_managedhotspot.moc"
