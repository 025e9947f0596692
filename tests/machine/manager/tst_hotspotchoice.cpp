// SPDX-License-Identifier: Apache-2.0
#include "firsthotspot.h"
#include "hotspotchannel.h"
#include "hotspotprofile.h"
#include "hotspotsubnet.h"
#include "radiofrequencies.h"

#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

using namespace morvek;

Q_DECLARE_METATYPE(morvek::HotspotAir)

namespace {

HotspotSubnet subnet(const char *text)
{
    const QStringList parts = QString::fromLatin1(text).split(QLatin1Char('/'));
    const QStringList bytes = parts[0].split(QLatin1Char('.'));
    quint32 address = 0;
    for (const QString &byte : bytes)
        address = address * 256 + byte.toUInt();
    return {address, parts[1].toInt()};
}

} // namespace

class HotspotChoiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void channel_data();
    void channel();
    void subnetIsReadFromTheProfile();
    void subnet_data();
    void subnet();
    void firstProfile();
    void firstProfileOfAMachineWithoutAName();
    void frequenciesOfTheKernel();
};

void HotspotChoiceTest::channel_data()
{
    QTest::addColumn<bool>("asks5GHz");
    QTest::addColumn<HotspotAir>("air");
    QTest::addColumn<QString>("expected");

    const auto air = [](const QVector<quint32> &heard) {
        HotspotAir result;
        result.heard = heard;
        return result;
    };
    const auto allowed = [](const QVector<quint32> &frequencies) {
        HotspotAir result;
        result.allowed = frequencies;
        return result;
    };
    QTest::addRow("nothing around") << false << air({}) << "bg 6 ";
    QTest::addRow("one on 6") << false << air({2437}) << "bg 1 ";
    QTest::addRow("one on 6, one on 1") << false << air({2437, 2412}) << "bg 11 ";
    QTest::addRow("one on each") << false << air({2437, 2412, 2462}) << "bg 6 ";
    QTest::addRow("two on 6, two on 1, one on 11") << false << air({2437, 2437, 2412, 2412, 2462}) << "bg 11 ";
    QTest::addRow("channel 3 is heard on 1 and on 6") << false << air({2422}) << "bg 11 ";
    QTest::addRow("channel 2 is heard on 6") << false << air({2417, 2462}) << "bg 6 ";
    QTest::addRow("channel 10 is heard on 6") << false << air({2457}) << "bg 1 ";
    QTest::addRow("the other band does not count") << false << air({5180, 5200}) << "bg 6 ";
    QTest::addRow("5 GHz") << true << air({}) << "a 36 ";
    QTest::addRow("5 GHz, one on 36") << true << air({5180}) << "a 40 ";
    QTest::addRow("5 GHz, all but 48") << true << air({5180, 5200, 5220}) << "a 48 ";

    HotspotAir lowOnly;
    lowOnly.has5GHz = false;
    QTest::addRow("no 5 GHz band") << true << lowOnly << "bg 6 the radio has no 5 GHz band";
    HotspotAir highOnly;
    highOnly.has2GHz = false;
    QTest::addRow("no 2.4 GHz band") << false << highOnly << "a 36 the radio has no 2.4 GHz band";
    HotspotAir neither;
    neither.has2GHz = false;
    neither.has5GHz = false;
    QTest::addRow("neither band") << false << neither << " 0 the radio has no 2.4 GHz band";

    HotspotAir bound;
    bound.bound = 2472;
    bound.heard = {2472};
    QTest::addRow("has to stay") << false << bound << "bg 13 ";
    QTest::addRow("has to stay in the other band")
        << true << bound << "bg 13 the radio is connected on 2472 MHz, and can be nowhere else";
    bound.bound = 5500;
    QTest::addRow("has to stay at 5 GHz") << true << bound << "a 100 ";
    QTest::addRow("has to stay at 5 GHz, 2.4 is asked for")
        << false << bound << "a 100 the radio is connected on 5500 MHz, and can be nowhere else";
    for (const auto &edge :
         {std::make_pair(2412U, "bg 1 "), std::make_pair(5180U, "a 36 "), std::make_pair(5825U, "a 165 ")}) {
        bound.bound = edge.first;
        QTest::addRow("has to stay on %u MHz", edge.first) << (edge.first > 5000) << bound << edge.second;
    }
    bound.bound = 58320;
    QTest::addRow("has to stay elsewhere")
        << false << bound << " 0 the radio is connected on 58320 MHz, and can be nowhere else";

    QTest::addRow("6 is not allowed") << false << allowed({2412, 2462, 5180}) << "bg 1 ";
    QTest::addRow("only 44 is allowed") << true << allowed({2437, 5220}) << "a 44 ";
    QTest::addRow("5 GHz is not allowed")
        << true << allowed({2412, 2437, 2462}) << "bg 6 no access point is allowed in the 5 GHz band";
    QTest::addRow("2.4 GHz is not allowed")
        << false << allowed({5240}) << "a 48 no access point is allowed in the 2.4 GHz band";
}

void HotspotChoiceTest::channel()
{
    QFETCH(bool, asks5GHz);
    QFETCH(HotspotAir, air);
    const HotspotChannel chosen = HotspotChannel::choose(asks5GHz, air);
    QTEST(chosen.band + QStringLiteral(" %1 ").arg(chosen.number) + chosen.remark, "expected");
}

void HotspotChoiceTest::subnetIsReadFromTheProfile()
{
    HotspotSubnet subnet;
    QVERIFY(HotspotSubnet::read(QStringLiteral("192.168.0.1"), QStringLiteral("255.255.255.0"), &subnet));
    QCOMPARE(subnet.address, 0xc0a80001U);
    QCOMPARE(subnet.prefix, 24);
    QCOMPARE(subnet.toString(), QStringLiteral("192.168.0.1/24"));
    QVERIFY(HotspotSubnet::read(QStringLiteral("10.1.2.3"), QStringLiteral("255.128.0.0"), &subnet));
    QCOMPARE(subnet.toString(), QStringLiteral("10.1.2.3/9"));
    QVERIFY(!HotspotSubnet::read(QStringLiteral("192.168.0"), QStringLiteral("255.255.255.0"), &subnet));
    QVERIFY(!HotspotSubnet::read(QStringLiteral("192.168.0.1"), QStringLiteral("255.0.255.0"), &subnet));
}

void HotspotChoiceTest::subnet_data()
{
    QTest::addColumn<QStringList>("taken");
    QTest::addColumn<QString>("expected");
    const QString all = QStringLiteral("10.0.0.0/8");
    QTest::addRow("none") << QStringList {} << "192.168.0.1/24";
    QTest::addRow("a neighbour") << QStringList {QStringLiteral("192.168.1.7/24")} << "192.168.0.1/24";
    QTest::addRow("the same") << QStringList {QStringLiteral("192.168.0.77/24")} << "10.42.0.1/24";
    QTest::addRow("a wider one") << QStringList {QStringLiteral("192.168.255.1/16")} << "10.42.0.1/24";
    QTest::addRow("a narrower one") << QStringList {QStringLiteral("192.168.0.200/30")} << "10.42.0.1/24";
    QTest::addRow("the manager's own, too")
        << QStringList {QStringLiteral("192.168.0.2/24"), QStringLiteral("10.42.0.1/24")} << "10.42.1.1/24";
    QTest::addRow("all of ten") << QStringList {QStringLiteral("192.168.0.2/24"), all} << "192.168.1.1/24";
    QTest::addRow("all but one") << QStringList {QStringLiteral("192.168.0.2/16"), all} << "172.31.0.1/24";
    QTest::addRow("all of the first but one")
        << QStringList {QStringLiteral("192.168.0.2/24"), QStringLiteral("10.42.0.1/17"),
                        QStringLiteral("10.42.128.1/18"), QStringLiteral("10.42.192.1/19"),
                        QStringLiteral("10.42.224.1/20"), QStringLiteral("10.42.240.1/21"),
                        QStringLiteral("10.42.248.1/22"), QStringLiteral("10.42.252.1/23"),
                        QStringLiteral("10.42.254.1/24")}
        << "10.42.255.1/24";
    QTest::addRow("everything") << QStringList {QStringLiteral("9.9.9.9/0")} << "192.168.0.1/24";
}

void HotspotChoiceTest::subnet()
{
    QFETCH(QStringList, taken);
    QVector<HotspotSubnet> others;
    for (const QString &text : taken)
        others += ::subnet(text.toLatin1().constData());
    QTEST(HotspotSubnet::choose(::subnet("192.168.0.1/24"), others).toString(), "expected");
    QVERIFY(::subnet("9.9.9.9/0").meets(::subnet("192.168.0.1/24")));
}

void HotspotChoiceTest::firstProfile()
{
    const QString name = QStringLiteral("caf\u00e9-") + QString(40, QLatin1Char('x'));
    const QJsonObject profile = FirstHotspot::profile(name);
    QVERIFY2(!HotspotProfile::check(profile), qPrintable(HotspotProfile::check(profile).text));
    const HotspotProfile::Network network = HotspotProfile::network(profile);
    QCOMPARE(network.ssid, QStringLiteral("caf\u00e9-") + QString(26, QLatin1Char('x')));
    QCOMPARE(network.security, HotspotProfile::Wpa2);
    QVERIFY(!network.in5GHz);
    QVERIFY(!network.isolated);
    QCOMPARE(HotspotProfile::inactivityTime(profile), 600000);
    const QRegularExpression readable(QStringLiteral("\\A[a-km-np-z2-9]{12}\\z"));
    QVERIFY2(readable.match(network.passphrase).hasMatch(), qPrintable(network.passphrase));
    QVERIFY(network.passphrase != HotspotProfile::network(FirstHotspot::profile(name)).passphrase);
}

void HotspotChoiceTest::firstProfileOfAMachineWithoutAName()
{
    for (const QString &name : {QString(), QStringLiteral("(none)")})
        QCOMPARE(HotspotProfile::network(FirstHotspot::profile(name)).ssid, QStringLiteral("Hotspot"));
}

/*! As the kernel sends it: two channels with nothing against them, and one each that is off, silent, or radar's. */
void HotspotChoiceTest::frequenciesOfTheKernel()
{
    const auto attribute = [](int type, const QByteArray &content) {
        const auto length = quint16(4 + content.size());
        QByteArray bytes(reinterpret_cast<const char *>(&length), 2);
        const auto word = quint16(type);
        bytes.append(reinterpret_cast<const char *>(&word), 2);
        bytes.append(content);
        while (bytes.size() % 4 != 0)
            bytes.append('\0');
        return bytes;
    };
    const auto number = [](quint32 value) { return QByteArray(reinterpret_cast<const char *>(&value), 4); };
    const auto frequency = [&](int index, quint32 mhz, int flag) {
        return attribute(index, attribute(1, number(mhz)) + (flag != 0 ? attribute(flag, {}) : QByteArray()));
    };
    const QByteArray low = attribute(0, attribute(1, frequency(0, 2412, 0) + frequency(1, 2417, 2)));
    const QByteArray high =
        attribute(1, attribute(1, frequency(0, 5180, 3) + frequency(1, 5200, 0) + frequency(2, 5260, 5)));
    const QByteArray message = attribute(1, number(7)) + attribute(22, low + high);
    QCOMPARE(RadioFrequencies::readMessage(message), QVector<quint32>({2412, 5200}));
    QCOMPARE(RadioFrequencies::readMessage(attribute(1, number(7))), QVector<quint32>());
    QCOMPARE(RadioFrequencies::read(QStringLiteral("lo")), QVector<quint32>());
}

QTEST_GUILESS_MAIN(HotspotChoiceTest)
#include "tst_hotspotchoice.moc"
