// SPDX-License-Identifier: Apache-2.0
#include "worldfixture.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

/*! Wi-Fi before wired; a VPN on the Wi-Fi; a USB interface that is not there; one that no DHCP server answers. */
const char HomeScenario[] = R"({
    'delays': {'reply': 0, 'release': 1, 'manual': 2, 'lease': 3},
    'interfaces': [
        {'name': 'eth0', 'type': 'wired', 'link_address': '02:00:00:00:00:01', 'mtu': 1500, 'connected': true,
         'lease': {'ip_addresses': ['fe80::1/64', '10.0.0.5/255.0.0.0'], 'ip_gateway': ['10.0.0.1']}},
        {'name': 'mute0', 'type': 'usb'},
        {'name': 'tun0', 'type': 'vpn', 'parent_interface': 'wlan0', 'connected': true,
         'manual': {'ip_addresses': ['10.8.0.6/255.255.255.0'], 'ip_gateway': ['10.8.0.1']}},
        {'name': 'usb0', 'type': 'usb', 'present': false,
         'lease': {'ip_addresses': ['192.168.42.9/255.255.255.0'], 'ip_gateway': ['192.168.42.1']}},
        {'name': 'wlan0', 'type': 'wifi', 'connected': true,
         'lease': {'ip_addresses': ['192.168.1.7/255.255.255.0'], 'ip_gateway': ['192.168.1.1']}}],
    'priority': ['usb0', 'wlan0', 'eth0', 'tun0']
})";

} // namespace

class SimulatedNetworkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void start();
    void disconnectAndConnectManually();
    void backToDhcp();
    void disconnectingTwiceTellsTwice();
    void latestRequestWins();
    void nobodyAnswersDhcp();
    void refusals();
    void linkLostAndRegained();
    void connectsWhenTheFirstLinkComes();
    void disconnectedStaysSoWithANewLink();
    void virtualFollowsItsParent();
    void virtualFollowsAVanishedParent();
    void appearsAndVanishes();
    void vanishesWhileItConnects();
    void pinnedDefault();
    void pinnedFromTheStart();
    void unrankedInterfaceIsNeverDefault();
    void priority();
    void rawAttributesStayUntilTheyAreConcerned();
    void circularParents();
};

void SimulatedNetworkTest::start()
{
    const WorldFixture home(HomeScenario);
    QCOMPARE(home.world.interfaces(),
             QStringList(
                 {QStringLiteral("eth0"), QStringLiteral("mute0"), QStringLiteral("tun0"), QStringLiteral("wlan0")}));
    QCOMPARE(home.status("default_interface"), QStringLiteral("wlan0"));
    QCOMPARE(home.status("priority"), QStringLiteral("[\"wlan0\",\"eth0\",\"tun0\"]"));

    const Attributes eth0 = home.world.interfaceAttributes(QStringLiteral("eth0"));
    const Attributes expected {
        {QStringLiteral("connected"), ZopVariant("true", "text")},
        {QStringLiteral("ip_addresses"), ZopVariant("[\"fe80::1/64\",\"10.0.0.5/255.0.0.0\"]", "json")},
        {QStringLiteral("ip_gateway"), ZopVariant("[\"10.0.0.1\"]", "json")},
        {QStringLiteral("link_address"), ZopVariant("02:00:00:00:00:01", "text")},
        {QStringLiteral("manual"), ZopVariant("no", "text")},
        {QStringLiteral("mtu"), ZopVariant("1500", "number")},
        {QStringLiteral("type"), ZopVariant("wired", "text")},
        {QStringLiteral("up"), ZopVariant("true", "text")},
    };
    QCOMPARE(eth0, expected);

    const Attributes mute0 = home.world.interfaceAttributes(QStringLiteral("mute0"));
    QCOMPARE(mute0.keys(),
             QStringList({QStringLiteral("connected"), QStringLiteral("ip_addresses"), QStringLiteral("ip_gateway"),
                          QStringLiteral("manual"), QStringLiteral("type"), QStringLiteral("up")}));
    QCOMPARE(home.attribute("mute0", "connected"), QStringLiteral("false"));
    QCOMPARE(home.attribute("mute0", "ip_addresses"), QStringLiteral("[]"));

    QCOMPARE(home.attribute("tun0", "manual"), QStringLiteral("yes"));
    QCOMPARE(home.attribute("tun0", "parent_interface"), QStringLiteral("wlan0"));
    QCOMPARE(home.attribute("tun0", "ip_addresses"), QStringLiteral("[\"10.8.0.6/255.255.255.0\"]"));
}

void SimulatedNetworkTest::disconnectAndConnectManually()
{
    WorldFixture home(HomeScenario);
    QCOMPARE(home.request("net_disconnected", "'eth0'"), 0);
    QCOMPARE(home.take(), QStringList());
    QCOMPARE(home.settle(),
             QStringList {QStringLiteral("eth0: connected=false ip_addresses=[] ip_gateway=[] up=true")});

    QCOMPARE(home.request("net_connected",
                          "['eth0',{'gateway':'10.1.1.1','ip_address':'10.1.1.20','manual':'yes','manual6':'off',"
                          "'netmask':'255.255.255.0'}]"),
             0);
    QCOMPARE(home.settle(),
             QStringList {QStringLiteral("eth0: connected=true ip_addresses=[\"10.1.1.20/255.255.255.0\"] "
                                         "ip_gateway=[\"10.1.1.1\"] manual=yes")});
}

void SimulatedNetworkTest::backToDhcp()
{
    WorldFixture home(HomeScenario);
    QCOMPARE(home.request("net_connected",
                          "['eth0',{'gateway':'10.1.1.1','ip_address':'10.1.1.20','manual':'yes','manual6':'off',"
                          "'netmask':'255.255.255.0'}]"),
             0);
    QCOMPARE(home.settle().size(), 1);
    QCOMPARE(home.request("net_connected", "['eth0',{'manual':'no','manual6':'off'}]"), 0);
    QCOMPARE(home.settle(),
             QStringList {QStringLiteral("eth0: connected=true ip_addresses=[\"fe80::1/64\",\"10.0.0.5/255.0.0.0\"] "
                                         "ip_gateway=[\"10.0.0.1\"] manual=no")});
}

// A client that took an interface for connected waits for the addresses to go, even when they went before.
void SimulatedNetworkTest::disconnectingTwiceTellsTwice()
{
    WorldFixture home(HomeScenario);
    const QStringList gone {QStringLiteral("eth0: connected=false ip_addresses=[] ip_gateway=[] up=true")};
    QCOMPARE(home.request("net_disconnected", "'eth0'"), 0);
    QCOMPARE(home.settle(), gone);
    QCOMPARE(home.request("net_disconnected", "'eth0'"), 0);
    QCOMPARE(home.settle(), gone);
}

void SimulatedNetworkTest::latestRequestWins()
{
    WorldFixture home(HomeScenario);
    QCOMPARE(home.request("net_disconnected", "'eth0'"), 0);
    QCOMPARE(home.request("net_connected", "['eth0',{'manual':'no'}]"), 0);
    QCOMPARE(
        home.request("net_connected",
                     "['eth0',{'gateway':'10.1.1.1','ip_address':'10.1.1.20','manual':'yes','netmask':'255.0.0.0'}]"),
        0);
    QCOMPARE(home.settle(),
             QStringList {QStringLiteral("eth0: connected=true ip_addresses=[\"10.1.1.20/255.0.0.0\"] "
                                         "ip_gateway=[\"10.1.1.1\"] manual=yes")});
}

void SimulatedNetworkTest::nobodyAnswersDhcp()
{
    WorldFixture home(HomeScenario);
    QCOMPARE(home.request("net_connected", "['mute0',{'manual':'no'}]"), 0);
    QCOMPARE(home.settle(),
             QStringList {QStringLiteral("mute0: connected=false ip_addresses=[] ip_gateway=[] manual=no")});
}

void SimulatedNetworkTest::refusals()
{
    WorldFixture home(HomeScenario);
    QCOMPARE(home.request("explode", "'eth0'"), 1);
    QCOMPARE(home.request("net_connected", "['eth0']"), 2);
    QCOMPARE(home.request("net_disconnected", "'wlan9'"), 3);
    QCOMPARE(home.request("net_connected", "['wlan9',{'manual':'no'}]"), 3);
    QCOMPARE(home.request("net_connected", "['usb0',{'manual':'no'}]"), 3);
    QCOMPARE(home.request("net_connected", "['eth0',{'manual':'yes'}]"), 4);
    home.network->setLink(QStringLiteral("eth0"), false);
    home.take();
    QCOMPARE(home.request("net_connected", "['eth0',{'manual':'no'}]"), 5);
    QCOMPARE(home.settle(), QStringList());
}

void SimulatedNetworkTest::linkLostAndRegained()
{
    WorldFixture home(HomeScenario);
    home.network->setLink(QStringLiteral("eth0"), false);
    QCOMPARE(home.take(), QStringList {QStringLiteral("eth0: connected=false ip_addresses=[] ip_gateway=[] up=false")});
    home.network->setLink(QStringLiteral("eth0"), true);
    QCOMPARE(home.take(), QStringList {QStringLiteral("eth0: up=true")});
    QCOMPARE(home.settle(),
             QStringList {QStringLiteral("eth0: connected=true ip_addresses=[\"fe80::1/64\",\"10.0.0.5/255.0.0.0\"] "
                                         "ip_gateway=[\"10.0.0.1\"] manual=no")});
}

void SimulatedNetworkTest::connectsWhenTheFirstLinkComes()
{
    WorldFixture one(R"({'delays': {'lease': 1}, 'interfaces': [{'name': 'a', 'type': 'wired', 'up': false,
                    'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}}]})");
    QCOMPARE(one.attribute("a", "up"), QStringLiteral("false"));
    one.network->setLink(QStringLiteral("a"), true);
    QCOMPARE(
        one.settle(),
        QStringList({QStringLiteral("a: up=true"),
                     QStringLiteral("a: connected=true ip_addresses=[\"10.0.0.5/255.0.0.0\"] ip_gateway=[] manual=no"),
                     QStringLiteral("status: default_interface=a")}));
}

void SimulatedNetworkTest::disconnectedStaysSoWithANewLink()
{
    WorldFixture home(HomeScenario);
    QCOMPARE(home.request("net_disconnected", "'eth0'"), 0);
    home.settle();
    home.network->setLink(QStringLiteral("eth0"), false);
    home.network->setLink(QStringLiteral("eth0"), true);
    QCOMPARE(home.settle(),
             QStringList({QStringLiteral("eth0: connected=false ip_addresses=[] ip_gateway=[] up=false"),
                          QStringLiteral("eth0: up=true")}));
}

void SimulatedNetworkTest::virtualFollowsItsParent()
{
    WorldFixture home(HomeScenario);
    home.network->setLink(QStringLiteral("wlan0"), false);
    QCOMPARE(home.take(),
             QStringList({QStringLiteral("wlan0: connected=false ip_addresses=[] ip_gateway=[] up=false"),
                          QStringLiteral("tun0: connected=false ip_addresses=[] ip_gateway=[] up=false"),
                          QStringLiteral("status: default_interface=eth0")}));
    QCOMPARE(home.request("net_connected", "['tun0',{'manual':'no'}]"), 5);
    home.network->setLink(QStringLiteral("wlan0"), true);
    QCOMPARE(home.settle(),
             QStringList({QStringLiteral("wlan0: up=true"),
                          QStringLiteral("wlan0: connected=true ip_addresses=[\"192.168.1.7/255.255.255.0\"] "
                                         "ip_gateway=[\"192.168.1.1\"] manual=no"),
                          QStringLiteral("tun0: up=true"), QStringLiteral("status: default_interface=wlan0"),
                          QStringLiteral("tun0: connected=true ip_addresses=[\"10.8.0.6/255.255.255.0\"] "
                                         "ip_gateway=[\"10.8.0.1\"] manual=yes")}));
}

void SimulatedNetworkTest::virtualFollowsAVanishedParent()
{
    WorldFixture home(HomeScenario);
    home.network->vanish(QStringLiteral("wlan0"));
    QCOMPARE(home.take(),
             QStringList({QStringLiteral("wlan0 removed"),
                          QStringLiteral("tun0: connected=false ip_addresses=[] ip_gateway=[] up=false"),
                          QStringLiteral("status: default_interface=eth0 priority=[\"eth0\",\"tun0\"]")}));
    QCOMPARE(home.attribute("tun0", "parent_interface"), QStringLiteral("wlan0"));
}

void SimulatedNetworkTest::appearsAndVanishes()
{
    WorldFixture home(HomeScenario);
    home.network->appear(QStringLiteral("usb0"));
    QCOMPARE(home.take(),
             QStringList({QStringLiteral("usb0 added"),
                          QStringLiteral("status: priority=[\"usb0\",\"wlan0\",\"eth0\",\"tun0\"]")}));
    QCOMPARE(home.attribute("usb0", "up"), QStringLiteral("true"));
    QCOMPARE(home.attribute("usb0", "connected"), QStringLiteral("false"));
    QCOMPARE(home.settle(),
             QStringList({QStringLiteral("usb0: connected=true ip_addresses=[\"192.168.42.9/255.255.255.0\"] "
                                         "ip_gateway=[\"192.168.42.1\"] manual=no"),
                          QStringLiteral("status: default_interface=usb0")}));
    home.network->vanish(QStringLiteral("usb0"));
    QCOMPARE(home.take(),
             QStringList({QStringLiteral("usb0 removed"),
                          QStringLiteral("status: default_interface=wlan0 priority=[\"wlan0\",\"eth0\",\"tun0\"]")}));
}

void SimulatedNetworkTest::vanishesWhileItConnects()
{
    WorldFixture home(HomeScenario);
    QCOMPARE(home.request("net_connected", "['eth0',{'manual':'no'}]"), 0);
    home.network->vanish(QStringLiteral("eth0"));
    QCOMPARE(home.settle(),
             QStringList({QStringLiteral("eth0 removed"), QStringLiteral("status: priority=[\"wlan0\",\"tun0\"]")}));
}

void SimulatedNetworkTest::pinnedDefault()
{
    WorldFixture home(HomeScenario);
    home.network->pinDefault(QStringLiteral("eth0"));
    QCOMPARE(home.take(), QStringList {QStringLiteral("status: default_interface=eth0")});
    home.network->setLink(QStringLiteral("eth0"), false);
    QCOMPARE(home.take().size(), 1); // eth0 itself: the default stays
    QCOMPARE(home.status("default_interface"), QStringLiteral("eth0"));
    home.network->pinDefault(QString());
    QCOMPARE(home.take(), QStringList {QStringLiteral("status: default_interface=")});
    home.network->followDefault();
    QCOMPARE(home.take(), QStringList {QStringLiteral("status: default_interface=wlan0")});
}

void SimulatedNetworkTest::pinnedFromTheStart()
{
    const WorldFixture one(R"({'default_interface': '', 'interfaces': [{'name': 'a', 'type': 'wired', 'connected': true,
                          'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}}]})");
    QCOMPARE(one.status("default_interface"), QString());
    QVERIFY(one.world.status(Service::Networking).contains(QStringLiteral("default_interface")));
}

void SimulatedNetworkTest::unrankedInterfaceIsNeverDefault()
{
    WorldFixture home(HomeScenario);
    home.network->setPriority({QStringLiteral("tun0")});
    home.network->setLink(QStringLiteral("wlan0"), false);
    QCOMPARE(home.status("default_interface"), QString());
    QCOMPARE(home.status("priority"), QStringLiteral("[\"tun0\"]"));
}

void SimulatedNetworkTest::priority()
{
    WorldFixture home(HomeScenario);
    home.network->setPriority({QStringLiteral("eth0"), QStringLiteral("wlan0")});
    QCOMPARE(home.take(), QStringList {QStringLiteral("status: default_interface=eth0 priority=[\"eth0\",\"wlan0\"]")});
}

void SimulatedNetworkTest::rawAttributesStayUntilTheyAreConcerned()
{
    WorldFixture home(HomeScenario);
    ZopChangeset garbage;
    garbage.assignments.insert(QStringLiteral("mtu"), QStringLiteral("many"));
    garbage.assignments.insert(QStringLiteral("connected"), QStringLiteral("perhaps"));
    garbage.removals.insert(QStringLiteral("type"));
    home.world.changeInterface(QStringLiteral("eth0"), garbage);
    QCOMPARE(home.request("net_connected", "['eth0',{'manual':'no'}]"), 0);
    home.settle();
    QCOMPARE(home.attribute("eth0", "mtu"), QStringLiteral("many"));
    QCOMPARE(home.attribute("eth0", "connected"), QStringLiteral("true"));
    QVERIFY(!home.world.interfaceAttributes(QStringLiteral("eth0")).contains(QStringLiteral("type")));
}

void SimulatedNetworkTest::circularParents()
{
    WorldFixture circle(R"({'allow_circular_parents': true, 'delays': {'manual': 1}, 'interfaces': [
        {'name': 'a', 'type': 'vpn', 'parent_interface': 'b', 'connected': true, 'manual': {'ip_addresses': ['::1/64']}},
        {'name': 'b', 'type': 'vpn', 'parent_interface': 'a', 'connected': true, 'manual': {'ip_addresses': ['::2/64']}}]})");
    circle.network->setLink(QStringLiteral("a"), false);
    QCOMPARE(circle.take(),
             QStringList({QStringLiteral("a: connected=false ip_addresses=[] ip_gateway=[] up=false"),
                          QStringLiteral("b: connected=false ip_addresses=[] ip_gateway=[] up=false"),
                          QStringLiteral("status: default_interface=")}));
    circle.network->setLink(QStringLiteral("a"), true);
    QCOMPARE(circle.settle(), QStringList());
}

QTEST_GUILESS_MAIN(SimulatedNetworkTest)
#include "tst_simulatednetwork.moc"
