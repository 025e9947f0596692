// SPDX-License-Identifier: Apache-2.0
#include "asyncnetworkinterfaceoperation.h"
#include "vethcase.h"
#include "watched.h"

#include <csignal>

using namespace morvek;

/*! An application that shows and configures real interfaces. */
class VethInterfacesTest : public VethCase
{
    Q_OBJECT

private Q_SLOTS:
    void lists();
    void fromDhcpToManualAndBack();
    void connectsWhatIsNotConnected();
    void usesItsOwnProfile();
    void refusesBadSettings();
    void refusesWithoutLink();
    void prefersByMetric();
    void tellsNoMomentWithoutPreferredInterface();
    void losesItsCarrier();
    void isDisconnectedWithoutItsCarrier();
    void dhcpWithoutAnAnswer();
    void managerDiesInARequest();
    void managerComesBack();
    void interfaceGoesAndComesBack();
    void twoApplications();
    void virtualInterface();
    void prefersIpv4ToIpv6();
    void countsTheMainTableOnly();
    void leavesWhatIsSharedAlone();
    void isNotConnectedAgainByForce();

private:
    using Configuring = Watched<AsyncNetworkInterfaceOperation>;
    std::unique_ptr<Configuring> configure(const char *name, const NetworkInterfaceConfig &config)
    {
        return std::make_unique<Configuring>(service()->configure(interface(name), config));
    }
    bool hasLease(const char *name, const char *pattern)
    {
        const QRegularExpression lease(QLatin1Char('^') + QLatin1String(pattern) + QLatin1Char('$'));
        return QTest::qWaitFor([this, name, lease] { return lease.match(text(name)).hasMatch(); }, Patience);
    }
    bool isSpoken(const char *line)
    {
        return QTest::qWaitFor([this, line] { return daemon().errors().contains(line); }, Patience);
    }
};

namespace {

const char *const Leased = "auto 10\\.9\\.0\\.1(0[0-9]|10)/24 via 10\\.9\\.0\\.1 connected";

} // namespace

void VethInterfacesTest::lists()
{
    QStringList names;
    const QList<NetworkInterface> interfaces = service()->interfaces();
    for (const NetworkInterface &each : interfaces)
        names += each.name();
    QCOMPARE(names, QStringList({QStringLiteral("vt0"), QStringLiteral("vt1")}));
    const NetworkInterface vt0 = interface("vt0");
    QCOMPARE(vt0.type(), NetworkInterface::Wired);
    QCOMPARE(vt0.maxTransmissionUnit(), 1500);
    QCOMPARE(vt0.macAddress().toUtf8(), shell("cat /sys/class/net/vt0/address"));
    QVERIFY(vt0.available());
    QVERIFY(!vt0.isVirtual());
    QVERIFY(hasLease("vt0", Leased));
    QCOMPARE(service()->preferredInterface().name(), QStringLiteral("vt0"));
    QCOMPARE(interface("vt0").priority(), 1);
    QCOMPARE(text("vt1"), QStringLiteral("auto apart"));
    QVERIFY(interface("vt1").available());
    QCOMPARE(interface("vt1").priority(), 2);
}

void VethInterfacesTest::fromDhcpToManualAndBack()
{
    QVERIFY(hasLease("vt0", Leased));
    auto manual = configure("vt0", byHand("10.9.0.77", "10.9.0.9"));
    QCOMPARE(manual->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("manual 10.9.0.77/24 via 10.9.0.9 connected"), Patience);
    QCOMPARE(kernelAddresses("vt0"), QStringList {QStringLiteral("10.9.0.77/24")});
    QCOMPARE(kernelRoute(), QStringLiteral("vt0 10.9.0.9"));
    // The user's profile is as it was.
    QCOMPARE(shell("nmcli --get-values ipv4.method,ipv4.addresses connection show house"), QByteArray("auto"));

    auto automatic = configure("vt0", dhcp());
    QCOMPARE(automatic->outcome(), QStringLiteral("ok"));
    QVERIFY(hasLease("vt0", Leased));
    const QStringList addresses = kernelAddresses("vt0");
    QCOMPARE(addresses.size(), 1);
    QVERIFY(addresses.first().startsWith(QLatin1String("10.9.0.1")));
    QCOMPARE(kernelRoute(), QStringLiteral("vt0 10.9.0.1"));
}

void VethInterfacesTest::connectsWhatIsNotConnected()
{
    auto manual = configure("vt1", byHand("10.9.1.77", "10.9.1.9"));
    QCOMPARE(manual->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt1"), QStringLiteral("manual 10.9.1.77/24 via 10.9.1.9 connected"), Patience);
    QCOMPARE(kernelAddresses("vt1"), QStringList {QStringLiteral("10.9.1.77/24")});
    QCOMPARE(shell("ls /run/bench/profiles"), QByteArray("house.nmconnection"));
    // It goes with the daemon, however that ends.
    daemon().signal(SIGKILL);
    QTRY_COMPARE_WITH_TIMEOUT(shell("nmcli --terse --fields NAME connection"), QByteArray("house"), Patience);
    QCOMPARE(kernelAddresses("vt1"), QStringList());
}

void VethInterfacesTest::usesItsOwnProfile()
{
    shell("nmcli connection add type ethernet ifname vt1 con-name other autoconnect no ipv4.method manual "
          "ipv4.addresses 10.9.1.50/24 ipv4.gateway 10.9.1.1 ipv4.dns 10.9.1.1 ipv4.dns-search example.org "
          "ipv4.routes 10.10.0.0/16");
    // After an answer of the manager the daemon knows of the profile, too.
    QCOMPARE(configure("vt0", byHand("10.9.0.77", "10.9.0.9"))->outcome(), QStringLiteral("ok"));
    auto manual = configure("vt1", byHand("10.9.1.77", "10.9.1.9"));
    QCOMPARE(manual->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt1"), QStringLiteral("manual 10.9.1.77/24 via 10.9.1.9 connected"), Patience);
    QCOMPARE(kernelAddresses("vt1"), QStringList {QStringLiteral("10.9.1.77/24")});
    QCOMPARE(shell("nmcli --get-values GENERAL.CONNECTION device show vt1"), QByteArray("other"));
    QCOMPARE(shell("nmcli --get-values ipv4.addresses connection show other"), QByteArray("10.9.1.50/24"));
}

void VethInterfacesTest::refusesBadSettings()
{
    // The daemon's own check, then what it knows of the manager.
    auto stranger = configure("vt0", byHand("10.9.0.77", "10.8.0.1"));
    QCOMPARE(stranger->outcome(),
             QStringLiteral("4 The system was unable to configure the interface. "
                            "(the gateway 10.8.0.1 is not a neighbour of "
                            "10.9.0.77/255.255.255.0)"));
    shell("nmcli device set vt1 managed no");
    QTRY_VERIFY_WITH_TIMEOUT(!interface("vt1").available(), Patience);
    auto unmanaged = configure("vt1", byHand("10.9.1.77", "10.9.1.1"));
    QCOMPARE(unmanaged->outcome(),
             QStringLiteral("11 The system was unable to configure the interface. "
                            "(the network manager leaves \"vt1\" alone)"));
    shell("nmcli device set vt1 managed yes");
    QTRY_VERIFY_WITH_TIMEOUT(interface("vt1").available(), Patience);
}

void VethInterfacesTest::refusesWithoutLink()
{
    shell("ip -n peer link set vp1 down");
    QTRY_VERIFY_WITH_TIMEOUT(!interface("vt1").available(), Patience);
    auto unlinked = configure("vt1", byHand("10.9.1.77", "10.9.1.1"));
    QCOMPARE(unlinked->outcome(),
             QStringLiteral("5 The system was unable to configure the interface. "
                            "(\"vt1\" has no link)"));
    shell("ip -n peer link set vp1 up");
    QTRY_VERIFY_WITH_TIMEOUT(interface("vt1").available(), Patience);
}

void VethInterfacesTest::prefersByMetric()
{
    shell("nmcli connection add type ethernet ifname vt1 con-name other ipv4.route-metric 50");
    shell("nmcli connection up other");
    QTRY_COMPARE_WITH_TIMEOUT(service()->preferredInterface().name(), QStringLiteral("vt1"), Patience);
    QCOMPARE(interface("vt1").priority(), 1);
    QCOMPARE(interface("vt0").priority(), 2);
    QCOMPARE(kernelRoute(), QStringLiteral("vt1 10.9.1.1"));
    shell("nmcli device modify vt1 ipv4.route-metric 500");
    QTRY_COMPARE_WITH_TIMEOUT(service()->preferredInterface().name(), QStringLiteral("vt0"), Patience);
    QCOMPARE(interface("vt0").priority(), 1);
    QCOMPARE(kernelRoute(), QStringLiteral("vt0 10.9.0.1"));
}

void VethInterfacesTest::tellsNoMomentWithoutPreferredInterface()
{
    QCOMPARE(service()->preferredInterface().name(), QStringLiteral("vt0"));
    QSignalSpy told(service(), &NetworkInterfaceService::preferredInterfaceChanged);
    QSignalSpy connected(service(), &NetworkInterfaceService::interfaceConnected);
    QCOMPARE(configure("vt0", byHand("10.9.0.77", "10.9.0.9"))->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(connected.count(), 1, Patience);
    QCOMPARE(configure("vt0", dhcp())->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(connected.count(), 2, Patience);
    // What is real comes after all that was not told.
    shell("nmcli connection down house");
    QTRY_COMPARE_WITH_TIMEOUT(told.count(), 1, Patience);
    QCOMPARE(told.at(0).at(0).value<NetworkInterface>().name(), QString());
}

void VethInterfacesTest::losesItsCarrier()
{
    QCOMPARE(configure("vt0", byHand("10.9.0.77", "10.9.0.9"))->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("manual 10.9.0.77/24 via 10.9.0.9 connected"), Patience);
    shell("ip -n peer link set vp0 down");
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("auto apart"), Patience);
    QVERIFY(!interface("vt0").available());
    QTRY_COMPARE_WITH_TIMEOUT(service()->preferredInterface().name(), QString(), Patience);
    shell("ip -n peer link set vp0 up");
    // What the application has asked for counts, and not the profile.
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("manual 10.9.0.77/24 via 10.9.0.9 connected"), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(kernelAddresses("vt0"), QStringList {QStringLiteral("10.9.0.77/24")}, Patience);
}

void VethInterfacesTest::isDisconnectedWithoutItsCarrier()
{
    QVERIFY(hasLease("vt0", Leased));
    shell("ip -n peer link set vp0 down");
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("auto apart"), Patience);
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&control, "net_disconnected", "'vt0'").outcome(), QStringLiteral("ok"));
    shell("ip -n peer link set vp0 up");
    QTRY_VERIFY_WITH_TIMEOUT(daemon().errors().contains("vt0 gets again what it was given"), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(kernelAddresses("vt0"), QStringList(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("auto apart"), Patience);
}

void VethInterfacesTest::dhcpWithoutAnAnswer()
{
    QCOMPARE(configure("vt0", byHand("10.9.0.77", "10.9.0.9"))->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("manual 10.9.0.77/24 via 10.9.0.9 connected"), Patience);
    manager().stopServer();
    QCOMPARE(configure("vt0", dhcp())->outcome(), QStringLiteral("ok"));
    QVERIFY(isSpoken("nobody answers DHCP on \"vt0\""));
    QCOMPARE(text("vt0"), QStringLiteral("auto apart"));
    QCOMPARE(kernelAddresses("vt0"), QStringList());
    // The manager goes on asking.
    QVERIFY(manager().startServer());
    QVERIFY(hasLease("vt0", Leased));
}

void VethInterfacesTest::managerDiesInARequest()
{
    QVERIFY(hasLease("vt0", Leased));
    ::kill(pid_t(manager().processId()), SIGSTOP);
    auto open = configure("vt0", byHand("10.9.0.77", "10.9.0.9"));
    QVERIFY(isSpoken("request net_disconnected"));
    QVERIFY(open->isOpen());
    manager().kill();
    const QString gone =
        QStringLiteral("10 The system was unable to configure the interface. (the network manager does not run)");
    QCOMPARE(open->outcome(), gone);
    // While it is away, the world stays, and nothing can be had.
    QVERIFY(hasLease("vt0", Leased));
    QCOMPARE(configure("vt0", byHand("10.9.0.77", "10.9.0.9"))->outcome(), gone);
    QVERIFY(manager().start());
    const auto isCarriedOut = [this] {
        return configure("vt0", byHand("10.9.0.78", "10.9.0.9"))->outcome() == QLatin1String("ok");
    };
    QVERIFY(QTest::qWaitFor(isCarriedOut, Patience));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("manual 10.9.0.78/24 via 10.9.0.9 connected"), Patience);
}

void VethInterfacesTest::managerComesBack()
{
    QCOMPARE(configure("vt0", byHand("10.9.0.77", "10.9.0.9"))->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("manual 10.9.0.77/24 via 10.9.0.9 connected"), Patience);
    manager().stop();
    QVERIFY(manager().start());
    QVERIFY(isSpoken("vt0 gets again what it was given"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("manual 10.9.0.77/24 via 10.9.0.9 connected"), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(kernelAddresses("vt0"), QStringList {QStringLiteral("10.9.0.77/24")}, Patience);
}

void VethInterfacesTest::interfaceGoesAndComesBack()
{
    const Seen status {QLatin1String(Status)};
    shell("ip link add vt2 type veth peer name vp2 netns peer && ip -n peer link set vp2 up");
    QTRY_VERIFY_WITH_TIMEOUT(interface("vt2").available(), Patience);
    QCOMPARE(status.text("priority"), QStringLiteral("[\"vt0\",\"vt1\",\"vt2\"]"));
    auto open = configure("vt2", byHand("10.9.2.2", "10.9.2.1"));
    QCOMPARE(open->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt2"), QStringLiteral("manual 10.9.2.2/24 via 10.9.2.1 connected"), Patience);
    shell("ip link del vt2");
    QTRY_COMPARE_WITH_TIMEOUT(interface("vt2").name(), QString(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(status.text("priority"), QStringLiteral("[\"vt0\",\"vt1\"]"), Patience);
    shell("ip link add vt2 type veth peer name vp2 netns peer && ip -n peer link set vp2 up");
    QTRY_COMPARE_WITH_TIMEOUT(text("vt2"), QStringLiteral("manual 10.9.2.2/24 via 10.9.2.1 connected"), Patience);
    QCOMPARE(kernelAddresses("vt2"), QStringList {QStringLiteral("10.9.2.2/24")});
    shell("ip link del vt2");
}

void VethInterfacesTest::twoApplications()
{
    const NetworkInterfaceServicePointer other(newNetworkInterfaceService());
    QVERIFY(other->ready());
    QVERIFY(hasLease("vt0", Leased));
    // Both at once, on two interfaces and on the same one.
    Configuring first(service()->configure(interface("vt0"), byHand("10.9.0.77", "10.9.0.9")));
    Configuring second(other->configure(interface(other.get(), "vt1"), byHand("10.9.1.77", "10.9.1.9")));
    Configuring third(other->configure(interface(other.get(), "vt0"), byHand("10.9.0.78", "10.9.0.9")));
    QCOMPARE(first.outcome(), QStringLiteral("ok"));
    QCOMPARE(second.outcome(), QStringLiteral("ok"));
    QCOMPARE(third.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt1"), QStringLiteral("manual 10.9.1.77/24 via 10.9.1.9 connected"), Patience);
    // One of the two has come last; all see the same, and the kernel, too.
    QTRY_VERIFY_WITH_TIMEOUT(interface("vt0").connected(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(text(interface(other.get(), "vt0")), text("vt0"), Patience);
    const QString last = kernelAddresses("vt0").join(QLatin1Char(' '));
    QVERIFY2(last == QLatin1String("10.9.0.77/24") || last == QLatin1String("10.9.0.78/24"), qPrintable(last));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("manual %1 via 10.9.0.9 connected").arg(last), Patience);
}

void VethInterfacesTest::virtualInterface()
{
    int code = -1;
    shell("ip link add link vt0 name vt0.7 type vlan id 7 || ip link add link vt0 name vt0.7 type macvlan", &code);
    if (code != 0)
        return QTest::qSkip("this kernel has neither VLANs nor anything like them", __FILE__, __LINE__);
    QTRY_VERIFY_WITH_TIMEOUT(interface("vt0.7").isVirtual(), Patience);
    QCOMPARE(interface("vt0.7").type(), NetworkInterface::Wired);
    QCOMPARE(interface("vt0.7").parent().name(), QStringLiteral("vt0"));
    QVERIFY(!interface("vt0").isVirtual());
    shell("ip link del vt0.7");
    QTRY_COMPARE_WITH_TIMEOUT(interface("vt0.7").name(), QString(), Patience);
}

void VethInterfacesTest::prefersIpv4ToIpv6()
{
    const Seen status {QLatin1String(Status)};
    shell("nmcli connection add type ethernet ifname vt1 con-name other ipv4.method disabled ipv6.method manual "
          "ipv6.addresses fd00:9::2/64 ipv6.gateway fd00:9::1 ipv6.route-metric 5");
    shell("nmcli connection up other");
    shell("ip link add vt2 type veth peer name vp2 netns peer && ip -n peer link set vp2 up");
    shell("nmcli connection add type ethernet ifname vt2 con-name third ipv4.method disabled ipv6.method manual "
          "ipv6.addresses fd00:8::2/64 ipv6.gateway fd00:8::1 ipv6.route-metric 4");
    shell("nmcli connection up third");
    QTRY_COMPARE_WITH_TIMEOUT(status.text("priority"), QStringLiteral("[\"vt0\",\"vt2\",\"vt1\"]"), Patience);
    QCOMPARE(service()->preferredInterface().name(), QStringLiteral("vt0"));
    shell("nmcli connection down house");
    QTRY_COMPARE_WITH_TIMEOUT(service()->preferredInterface().name(), QStringLiteral("vt2"), Patience);
    QCOMPARE(Seen(interfacePath("vt2")).text("ip_gateway"), QStringLiteral("[\"fd00:8::1\"]"));
    shell("ip link del vt2");
    QTRY_COMPARE_WITH_TIMEOUT(service()->preferredInterface().name(), QStringLiteral("vt1"), Patience);
}

void VethInterfacesTest::countsTheMainTableOnly()
{
    shell("nmcli connection add type ethernet ifname vt1 con-name other ipv4.route-metric 5 ipv4.route-table 200");
    shell("nmcli connection up other");
    QTRY_VERIFY_WITH_TIMEOUT(interface("vt1").connected(), Patience);
    // Which comes after whatever was told of vt1.
    QCOMPARE(configure("vt0", byHand("10.9.0.77", "10.9.0.9"))->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("manual 10.9.0.77/24 via 10.9.0.9 connected"), Patience);
    QCOMPARE(service()->preferredInterface().name(), QStringLiteral("vt0"));
    QCOMPARE(kernelRoute(), QStringLiteral("vt0 10.9.0.9"));
    shell("nmcli device modify vt1 ipv4.route-table 254");
    QTRY_COMPARE_WITH_TIMEOUT(service()->preferredInterface().name(), QStringLiteral("vt1"), Patience);
}

void VethInterfacesTest::leavesWhatIsSharedAlone()
{
    shell("nmcli connection add type ethernet ifname vt1 con-name other ipv4.method shared "
          "ipv4.addresses 10.9.1.50/24");
    shell("nmcli connection up other");
    QTRY_VERIFY_WITH_TIMEOUT(interface("vt1").connected(), Patience);
    QCOMPARE(configure("vt1", byHand("10.9.1.77", "10.9.1.9"))->outcome(),
             QStringLiteral("12 The system was unable to configure the interface. "
                            "(\"vt1\" shares its addresses with others)"));
    QCOMPARE(kernelAddresses("vt1"), QStringList {QStringLiteral("10.9.1.50/24")});
}

void VethInterfacesTest::isNotConnectedAgainByForce()
{
    QCOMPARE(configure("vt1", byHand("10.9.1.77", "10.9.1.9"))->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt1"), QStringLiteral("manual 10.9.1.77/24 via 10.9.1.9 connected"), Patience);
    shell("nmcli device disconnect vt1");
    QTRY_COMPARE_WITH_TIMEOUT(text("vt1"), QStringLiteral("auto apart"), Patience);
    // A request comes after whatever it would have done by itself.
    QCOMPARE(configure("vt0", byHand("10.9.0.77", "10.9.0.9"))->outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(text("vt0"), QStringLiteral("manual 10.9.0.77/24 via 10.9.0.9 connected"), Patience);
    QVERIFY(!daemon().errors().contains("vt1 gets again what it was given"));
    QCOMPARE(kernelAddresses("vt1"), QStringList());
}

QTEST_GUILESS_MAIN(VethInterfacesTest)

#include "tst_vethinterfaces.moc"
