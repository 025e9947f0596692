// SPDX-License-Identifier: Apache-2.0
#include "modelmirror.h"
#include "wifiscan.h"

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <limits>

Q_DECLARE_METATYPE(morvek::NetworkSecurity)

using namespace morvek;
using namespace WifiScan;

namespace {

const char Open[] = "ESS";
const char Wpa3[] = "WPA3-SAE-CCMP";
const char Enterprise[] = "WPA2-EAP-CCMP";
const char Owe[] = "OWE";
const char Strange[] = "CCMP";

QString home()
{
    return QStringLiteral("Home");
}

/*! The access points of one network: "-50 ESS" each. */
QVector<Found> named(const QString &ssid, const QStringList &accessPoints)
{
    QVector<Found> found;
    for (const QString &one : accessPoints)
        found.append(accessPoint(ssid, one.section(QLatin1Char(' '), 0, 0).toInt(),
                                 one.section(QLatin1Char(' '), 1).toLatin1().constData()));
    return found;
}

QVariant value(const WifiNetworkModel &model, int role, int row = 0)
{
    return model.index(row).data(role);
}

/*! "WPA2, protected, joinable, needs passkey" */
QString protection(const WifiNetworkModel &model)
{
    QStringList words {value(model, WifiNetworkModel::SecurityRole).toString()};
    for (const auto &[role, word] : {std::make_pair(WifiNetworkModel::ProtectedRole, "protected"),
                                     std::make_pair(WifiNetworkModel::JoinableRole, "joinable"),
                                     std::make_pair(WifiNetworkModel::NeedsPasskeyRole, "needs passkey"),
                                     std::make_pair(WifiNetworkModel::OpenTwinRole, "open twin")}) {
        if (value(model, role).toBool())
            words += QString::fromLatin1(word);
    }
    return words.join(QLatin1String(", "));
}

} // namespace

/*! What the rows tell, and when. */
class TestWifiNetworkModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rolesHaveNames();
    void bars_data();
    void bars();
    void protection_data();
    void protection();
    void levelOfWhatIsJoined_data();
    void levelOfWhatIsJoined();
    void connectionIsOneOfTheAccessPoints_data();
    void connectionIsOneOfTheAccessPoints();
    void connectionTellsNothingOfOthers();
    void namesWithoutRow();
    void joining();
    void holding();
    void holdingWhatIsInUse();
    void mergedChanges();
    void stateFirst();
    void toldInSlots();
    void displayName_data();
    void displayName();
    void hostileNames();
};

void TestWifiNetworkModel::rolesHaveNames()
{
    WifiNetworkModel model;
    const QHash<int, QByteArray> names {{257, "ssid"},     {258, "displayName"},  {259, "level"},
                                        {260, "bars"},     {261, "security"},     {262, "isProtected"},
                                        {263, "joinable"}, {264, "needsPasskey"}, {265, "inUse"},
                                        {266, "joining"},  {267, "openTwin"},     {268, "accessPoints"}};
    QCOMPARE(model.roleNames(), names);

    model.setFound(named(home(), {"-61 WPA2-PSK-CCMP", "-70 WPA-PSK-TKIP", "-50 ESS", "0 WPS"}));
    model.setJoining(home());
    const QVariantList values {home(),
                               QStringLiteral("\u2068Home\u2069"),
                               -61,
                               3,
                               QStringLiteral("WPA/WPA2"),
                               true,
                               true,
                               true,
                               false,
                               true,
                               true,
                               4};
    for (int i = 0; i < values.size(); ++i)
        QCOMPARE(value(model, 257 + i), values[i]);
    QCOMPARE(value(model, Qt::DisplayRole), QVariant(QStringLiteral("\u2068Home\u2069")));
    QCOMPARE(value(model, Qt::DecorationRole), QVariant());
    QCOMPARE(value(model, 269), QVariant());
    QCOMPARE(value(model, WifiNetworkModel::SsidRole, 1), QVariant());
    QCOMPARE(model.rowCount(model.index(0)), 0);
    QCOMPARE(model.count(), 1);
    QCOMPARE(model.rowOf(home()), 0);
    QCOMPARE(model.rowOf(QStringLiteral("home")), -1);
}

void TestWifiNetworkModel::bars_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("bars");
    for (const auto &[level, bars] :
         {std::make_pair(-55, 4), std::make_pair(-56, 3), std::make_pair(-65, 3), std::make_pair(-66, 2),
          std::make_pair(-75, 2), std::make_pair(-76, 1), std::make_pair(-85, 1), std::make_pair(-86, 0),
          std::make_pair(0, 0), std::make_pair(1, 4), std::make_pair(std::numeric_limits<int>::max(), 4),
          std::make_pair(std::numeric_limits<int>::min(), 0)})
        QTest::addRow("%d", level) << level << bars;
}

void TestWifiNetworkModel::bars()
{
    QFETCH(const int, level);
    WifiNetworkModel model;
    model.setFound({accessPoint(home(), level)});
    QTEST(value(model, WifiNetworkModel::BarsRole).toInt(), "bars");
    QCOMPARE(value(model, WifiNetworkModel::LevelRole).toInt(), level);
}

void TestWifiNetworkModel::protection_data()
{
    QTest::addColumn<QStringList>("accessPoints");
    QTest::addColumn<QString>("told");
    QTest::newRow("open") << QStringList {"-50 ESS", "-60 ESS"} << "open, joinable";
    QTest::newRow("WPA2") << QStringList {"-50 WPA2-PSK-CCMP"} << "WPA2, protected, joinable, needs passkey";
    QTest::newRow("open twin, stronger") << QStringList {"-50 ESS", "-60 WPA2-PSK-CCMP"}
                                         << "WPA2, protected, joinable, needs passkey, open twin";
    QTest::newRow("open twin, weaker") << QStringList {"-50 WPA2-PSK-CCMP", "-60 ESS"}
                                       << "WPA2, protected, joinable, needs passkey, open twin";
    QTest::newRow("open twin with WPS") << QStringList {"-50 WPS", "-60 WPA2-PSK-CCMP"}
                                        << "WPA2, protected, joinable, needs passkey, open twin";
    QTest::newRow("two kinds") << QStringList {"-50 WPA2-PSK-CCMP", "-60 WPA3-SAE-CCMP"}
                               << "WPA2/WPA3, protected, joinable, needs passkey";
    QTest::newRow("enterprise with an open twin")
        << QStringList {"-50 WPA2-EAP-CCMP", "-60 ESS"} << "WPA2 Enterprise, protected, open twin";
    QTest::newRow("WPA3") << QStringList {"-50 WPA3-SAE-CCMP"} << "WPA3, protected";
    QTest::newRow("OWE with an open twin") << QStringList {"-50 OWE", "-40 ESS"} << "OWE, protected, open twin";
    QTest::newRow("unknown protection") << QStringList {"-50 CCMP", "-40 ESS"}
                                        << "unknown protection, protected, open twin";
}

void TestWifiNetworkModel::protection()
{
    QFETCH(const QStringList, accessPoints);
    WifiNetworkModel model;
    ModelMirror mirror(&model);
    model.setFound(named(home(), accessPoints));
    QTEST(::protection(model), "told");
    // What a former scan has found is not kept.
    model.setFound({accessPoint(home(), -50, "WEP")});
    QCOMPARE(::protection(model), QStringLiteral("WEP, protected"));
    model.setFound({accessPoint(home(), -50, Open)});
    QCOMPARE(::protection(model), QStringLiteral("open, joinable"));
    model.setFound({Found {home(), -50, NetworkSecurity()}});
    QCOMPARE(::protection(model), QStringLiteral("unknown, protected"));
    model.setFound(named(home(), accessPoints));
    QTEST(::protection(model), "told");
    mirror.compare();
}

void TestWifiNetworkModel::levelOfWhatIsJoined_data()
{
    QTest::addColumn<QStringList>("accessPoints");
    QTest::addColumn<int>("level");
    QTest::newRow("open") << QStringList {"-50 ESS", "-40 WPS", "-60 ESS"} << -40;
    QTest::newRow("protected") << QStringList {"-70 WPA2-PSK-CCMP", "-60 WPA-PSK-TKIP", "-80 WEP"} << -60;
    QTest::newRow("open twin first") << QStringList {"-40 ESS", "-60 WPA2-PSK-CCMP"} << -60;
    QTest::newRow("open twin last") << QStringList {"-60 WPA2-PSK-CCMP", "-40 ESS"} << -60;
    QTest::newRow("open twin between") << QStringList {"-60 WPA2-PSK-CCMP", "-40 ESS", "-55 WPA2-PSK-CCMP"} << -55;
    QTest::newRow("not known, with an open twin") << QStringList {"-40 ESS", "0 WPA2-PSK-CCMP"} << 0;
}

/*! An open twin does not lift the row of what is far away. */
void TestWifiNetworkModel::levelOfWhatIsJoined()
{
    QFETCH(const QStringList, accessPoints);
    WifiNetworkModel model;
    model.setFound(named(home(), accessPoints));
    QTEST(value(model, WifiNetworkModel::LevelRole).toInt(), "level");
    QCOMPARE(value(model, WifiNetworkModel::AccessPointsRole).toInt(), accessPoints.size());
}

void TestWifiNetworkModel::connectionIsOneOfTheAccessPoints_data()
{
    QTest::addColumn<NetworkSecurity>("connection");
    QTest::addColumn<QStringList>("accessPoints");
    QTest::addColumn<QString>("told");
    const QStringList none;
    QTest::newRow("WPA2, not found") << security(Wpa2) << none << "WPA2, protected, joinable, needs passkey";
    QTest::newRow("open, not found") << security(Open) << none << "open, joinable";
    QTest::newRow("unknown, not found") << NetworkSecurity() << none << "unknown, protected";
    QTest::newRow("open beside WPA2") << security(Open) << QStringList {"-50 WPA2-PSK-CCMP"}
                                      << "WPA2, protected, joinable, needs passkey, open twin";
    QTest::newRow("WPA2 beside open") << security(Wpa2) << QStringList {"-50 ESS"}
                                      << "WPA2, protected, joinable, needs passkey, open twin";
    QTest::newRow("WPA2 of WPA2 and WPA3")
        << security(Wpa2) << QStringList {"-50 WPA3-SAE-CCMP"} << "WPA2/WPA3, protected, joinable, needs passkey";
    QTest::newRow("unknown beside open") << NetworkSecurity() << QStringList {"-50 ESS"} << "open, joinable";
    QTest::newRow("unknown beside WPA2") << NetworkSecurity() << QStringList {"-50 WPA2-PSK-CCMP"}
                                         << "WPA2, protected, joinable, needs passkey";
}

void TestWifiNetworkModel::connectionIsOneOfTheAccessPoints()
{
    QFETCH(const NetworkSecurity, connection);
    QFETCH(const QStringList, accessPoints);
    WifiNetworkModel model;
    ModelMirror mirror(&model);
    model.setFound(named(home(), accessPoints));
    model.setInUse(home(), connection);
    QCOMPARE(model.count(), 1);
    QTEST(::protection(model), "told");
    QCOMPARE(value(model, WifiNetworkModel::InUseRole), QVariant(true));
    QCOMPARE(value(model, WifiNetworkModel::AccessPointsRole).toInt(), accessPoints.size());
    QCOMPARE(value(model, WifiNetworkModel::LevelRole).toInt(), accessPoints.isEmpty() ? 0 : -50);
    // A scan that does not find it takes nothing away from what is known of it.
    model.setFound({});
    QTEST(::protection(model), "told");
    QCOMPARE(value(model, WifiNetworkModel::AccessPointsRole).toInt(), 0);
    QCOMPARE(value(model, WifiNetworkModel::LevelRole).toInt(), 0);
    mirror.compare();
}

void TestWifiNetworkModel::connectionTellsNothingOfOthers()
{
    WifiNetworkModel model;
    model.setFound({accessPoint(home(), -50), accessPoint(QStringLiteral("Other"), -60)});
    model.setInUse(QStringLiteral("Other"), security(Open));
    QCOMPARE(model.rowOf(home()), 1);
    ModelMirror mirror(&model);
    QCOMPARE(mirror.values("openTwin"), (QVariantList {true, false}));
    model.setInUse(QStringLiteral("Other"), security(Enterprise));
    QCOMPARE(mirror.values("security"), (QVariantList {"WPA2 + Enterprise", "WPA2"}));
}

void TestWifiNetworkModel::namesWithoutRow()
{
    WifiNetworkModel model;
    ModelMirror mirror(&model);
    model.setFound({accessPoint(QString(), -30), accessPoint(QStringLiteral(""), -30), accessPoint(home(), -50)});
    QCOMPARE(mirror.values("ssid"), QVariantList {home()});
    model.setInUse(QString(), security(Wpa2));
    model.setJoining(QString());
    model.setJoining(QStringLiteral("Elsewhere"));
    QCOMPARE(mirror.takeTold(), QStringList {"insert 0-0"});
    QCOMPARE(model.rowOf(QString()), -1);
}

void TestWifiNetworkModel::joining()
{
    WifiNetworkModel model;
    model.setFound(scan(QStringLiteral("A-50 B-60 C-70")));
    ModelMirror mirror(&model);
    model.setJoining(QStringLiteral("B"));
    QCOMPARE(mirror.values("joining"), (QVariantList {false, true, false}));
    QCOMPARE(mirror.takeTold(), QStringList {"change 1-1 joining"});
    model.setJoining(QStringLiteral("C"));
    QCOMPARE(mirror.takeTold(), QStringList {"change 1-2 joining"});
    model.setJoining(QString());
    QCOMPARE(mirror.takeTold(), QStringList {"change 2-2 joining"});
}

void TestWifiNetworkModel::holding()
{
    WifiNetworkModel model;
    model.setFound(scan(QStringLiteral("A-50 B-60 C-70")));
    ModelMirror mirror(&model);
    QSignalSpy held(&model, &WifiNetworkModel::heldChanged);
    QSignalSpy count(&model, &WifiNetworkModel::countChanged);
    QCOMPARE(model.isHeld(), false);
    model.setHeld(false);
    QCOMPARE(held.count(), 0);
    model.setHeld(true);
    QCOMPARE(held.count(), 1);
    QCOMPARE(model.isHeld(), true);
    model.setHeld(true);
    QCOMPARE(held.count(), 1);

    model.setFound(scan(QStringLiteral("A-90 C-40 C-50 D-30")));
    QCOMPARE(order(model), QStringLiteral("ABC"));
    QCOMPARE(mirror.values("level"), (QVariantList {-90, 0, -40}));
    QCOMPARE(mirror.values("accessPoints"), (QVariantList {1, 0, 2}));
    QCOMPARE(mirror.values("security"), (QVariantList {"WPA2", "WPA2", "WPA2"}));
    QCOMPARE(mirror.takeTold(), (QStringList {"change 0-0 level bars", "change 1-2 level bars accessPoints"}));
    model.setInUse(QStringLiteral("C"), security(Wpa2));
    model.setJoining(QStringLiteral("A"));
    QCOMPARE(mirror.takeTold(), (QStringList {"change 2-2 inUse", "change 0-0 joining"}));
    QCOMPARE(model.rowOf(QStringLiteral("D")), -1);
    QCOMPARE(count.count(), 0);
    // What has come and gone in between never was.
    model.setFound(scan(QStringLiteral("A-90 C-40 E-30 F-60")));
    QCOMPARE(mirror.takeTold(), QStringList {"change 2-2 accessPoints"});

    bool isMadeUpFor = false;
    connect(&model, &WifiNetworkModel::heldChanged, this, [&] { isMadeUpFor = order(model) == QLatin1String("CEFA"); });
    model.setHeld(false);
    QVERIFY(isMadeUpFor);
    QCOMPARE(held.count(), 2);
    QCOMPARE(mirror.takeTold(), (QStringList {"remove 1-1", "move 0-0 to 2", "insert 1-2"}));
    QCOMPARE(count.count(), 1);
    QCOMPARE(model.rowOf(QStringLiteral("D")), -1);
    mirror.compare();
}

void TestWifiNetworkModel::holdingWhatIsInUse()
{
    WifiNetworkModel model;
    ModelMirror mirror(&model);
    model.setInUse(home(), security(Wpa2));
    QCOMPARE(mirror.takeTold(), QStringList {"insert 0-0"});
    model.setHeld(true);
    model.setInUse(QStringLiteral("Other"), security(Open));
    QCOMPARE(mirror.takeTold(), QStringList {"change 0-0 inUse"});
    QCOMPARE(::protection(model), QStringLiteral("WPA2, protected, joinable, needs passkey"));
    model.setInUse(QStringLiteral("Third"), security(Wpa2));
    model.setHeld(false);
    QCOMPARE(mirror.takeTold(), (QStringList {"remove 0-0", "insert 0-0"}));
    QCOMPARE(mirror.values("ssid"), QVariantList {QStringLiteral("Third")});
    QCOMPARE(mirror.values("inUse"), QVariantList {true});
}

void TestWifiNetworkModel::mergedChanges()
{
    WifiNetworkModel model;
    model.setFound(scan(QStringLiteral("A-50 B-51 C-60 D-61 E-62 F-70")));
    ModelMirror mirror(&model);
    model.setFound(scan(QStringLiteral("A-51 B-52 C-60 D-62 E-66 F-71")));
    QCOMPARE(mirror.takeTold(),
             (QStringList {"change 0-1 level", "change 3-3 level", "change 4-4 level bars", "change 5-5 level"}));
    QVector<Found> all = scan(QStringLiteral("A-51 B-52 C-60 D-62 E-66 F-71"));
    // WPS is seen, but changes nothing else.
    all[1].security = all[1].security | security("WPS");
    all[2].security = security(Wpa3);
    all[3].security = security(Enterprise);
    all[4].security = security(Open);
    all[5].security = security(Strange) | security(Owe);
    model.setFound(all);
    QCOMPARE(mirror.values("security"),
             (QVariantList {"WPA2", "WPA2 + WPS", "WPA3", "WPA2 Enterprise", "open", "OWE"}));
    QCOMPARE(
        mirror.takeTold(),
        (QStringList {"change 1-1 security", "change 2-3 security joinable needsPasskey",
                      "change 4-4 security isProtected needsPasskey", "change 5-5 security joinable needsPasskey"}));
    // Its name is the same without what was unknown beside it.
    all[5].security = security(Owe);
    model.setFound(all);
    QCOMPARE(mirror.takeTold(), QStringList());
    mirror.compare();
}

void TestWifiNetworkModel::stateFirst()
{
    WifiNetworkModel model;
    model.setFound(scan(QStringLiteral("A-50 B-60 C-70")));
    const QVariantList after {-51, -60, -71};
    int told = 0;
    connect(&model, &WifiNetworkModel::dataChanged, this, [&] {
        ++told;
        for (int row = 0; row < 3; ++row)
            QCOMPARE(value(model, WifiNetworkModel::LevelRole, row), after[row]);
    });
    model.setFound(scan(QStringLiteral("A-51 B-60 C-71")));
    QCOMPARE(told, 2);

    QStringList counts;
    connect(&model, &WifiNetworkModel::countChanged, this,
            [&] { counts += QStringLiteral("%1 %2").arg(model.count()).arg(order(model)); });
    model.setFound(scan(QStringLiteral("C-71 D-80")));
    model.setFound(scan(QStringLiteral("C-71 E-80")));
    model.setFound({});
    // Of as many rows there is nothing to tell.
    QCOMPARE(counts, (QStringList {"2 CD", "0 "}));
}

void TestWifiNetworkModel::toldInSlots()
{
    WifiNetworkModel model;
    ModelMirror mirror(&model);
    model.setFound(scan(QStringLiteral("A-50 B-60 C-70 D-80")));
    // Each change of rows is answered with something else, once.
    bool isRemoved = false;
    connect(&model, &WifiNetworkModel::rowsAboutToBeRemoved, this, [&] {
        if (!std::exchange(isRemoved, true)) {
            model.setFound(scan(QStringLiteral("D-30 C-40 E-50 A-60")));
            model.setInUse(QStringLiteral("B"), security(Wpa2));
        }
    });
    bool isMoved = false;
    connect(&model, &WifiNetworkModel::rowsMoved, this, [&] {
        if (!std::exchange(isMoved, true)) {
            model.setInUse(QStringLiteral("F"), security(Wpa2));
            model.setFound({});
        }
    });
    bool isInserted = false;
    connect(&model, &WifiNetworkModel::rowsAboutToBeInserted, this, [&] {
        if (!std::exchange(isInserted, true))
            model.setFound(scan(QStringLiteral("G-50")));
    });
    connect(&model, &WifiNetworkModel::dataChanged, this, [&] { model.setInUse(QStringLiteral("H"), security(Open)); });
    model.setFound(scan(QStringLiteral("A-50 D-40 E-30")));
    QVERIFY(isRemoved);
    QVERIFY(isMoved);
    QVERIFY(isInserted);
    QCOMPARE(order(model), QStringLiteral("HG"));
    mirror.compare();
    QCOMPARE(model.rowOf(QStringLiteral("A")), -1);
    QCOMPARE(model.rowOf(QStringLiteral("G")), 1);
}

void TestWifiNetworkModel::displayName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *what, const QString &name, const QString &shown) {
        QTest::newRow(what) << name << QChar(0x2068) + shown + QChar(0x2069);
    };
    QTest::newRow("none") << QString() << QString();
    QTest::newRow("empty") << QStringLiteral("") << QString();
    row("plain", QStringLiteral("Home"), QStringLiteral("Home"));
    row("blank", QStringLiteral(" "), QStringLiteral(" "));
    row("markup", QStringLiteral("<b>&amp;"), QStringLiteral("<b>&amp;"));
    row("other letters", QStringLiteral("Gäste ☕ ביתי \u00a0\u00ae"), QStringLiteral("Gäste ☕ ביתי \u00a0\u00ae"));
    row("pair", QStringLiteral("a\U0001F600b"), QStringLiteral("a\U0001F600b"));
    row("zero", QString(3, QChar(0)), QStringLiteral("␀␀␀"));
    row("line break", QStringLiteral("a\r\nb\tc\u001f"), QStringLiteral("a␍␊b␉c␟"));
    row("delete", QStringLiteral("~\u007f"), QStringLiteral("~␡"));
    row("C1", QStringLiteral("\u0080\u0085\u009f"), QStringLiteral("���"));
    row("marks", QStringLiteral("\u061b\u061c\u061d\u200d\u200e\u200f\u2010"),
        QStringLiteral("\u061b�\u061d\u200d��\u2010"));
    row("separators and overrides", QStringLiteral("\u2027\u2028\u2029\u202a\u202b\u202c\u202d\u202e\u202f"),
        QStringLiteral("\u2027�������\u202f"));
    row("isolates", QStringLiteral("\u2066\u2067\u2068\u2069"), QStringLiteral("����"));
    row("invisible", QStringLiteral("\u00ac\u00ad\u00ae\u180d\u180e\u180f\u200a\u200b\u200c\ufefe\ufeff\uff00"),
        QStringLiteral("\u00ac�\u00ae\u180d�\u180f\u200a�\u200c\ufefe�\uff00"));
    row("joiners and annotations", QStringLiteral("\u205f\u2060\u2065\u206a\u206f\u2070\ufff8\ufff9\ufffb\ufffc"),
        QStringLiteral("\u205f����\u2070\ufff8��\ufffc"));
    row("first half alone", QStringLiteral("a") + QChar(0xd83d), QStringLiteral("a�"));
    row("first half before another character", QString(QChar(0xd83d)) + QLatin1Char('b'), QStringLiteral("�b"));
    row("second half alone", QString(QChar(0xde00)) + QLatin1Char('b'), QStringLiteral("�b"));
    row("second half after another character", QStringLiteral("\n") + QChar(0xde00), QStringLiteral("␊�"));
    row("halves turned around", QString(QChar(0xde00)) + QChar(0xd83d), QStringLiteral("��"));
    row("half before a pair", QString(QChar(0xd83d)) + QStringLiteral("\U0001F600"), QStringLiteral("�\U0001F600"));
}

void TestWifiNetworkModel::displayName()
{
    QFETCH(const QString, name);
    QTEST(WifiNetworkModel::displayName(name), "shown");
}

void TestWifiNetworkModel::hostileNames()
{
    const QStringList names {QString::fromUtf8(QByteArray(32, '\xff')),
                             QString(QChar(0)),
                             QString(2, QChar(0)),
                             QStringLiteral("\u202eemoH"),
                             QStringLiteral("\n"),
                             QStringLiteral(" "),
                             QString(1000000, QLatin1Char('x')),
                             QString(QChar(0xd83d)),
                             QStringLiteral("Home"),
                             QStringLiteral("home"),
                             QStringLiteral("Home ")};
    QVector<Found> found;
    for (const QString &name : names)
        found += {accessPoint(name, -50), accessPoint(name, -50)};
    WifiNetworkModel model;
    ModelMirror mirror(&model);
    for (const int step : {0, 1, 2}) {
        std::rotate(found.begin(), found.begin() + step, found.end());
        model.setFound(found);
        QCOMPARE(model.count(), names.size());
        for (const QString &name : names)
            QCOMPARE(value(model, WifiNetworkModel::SsidRole, model.rowOf(name)).toString(), name);
        QCOMPARE(mirror.takeTold(), step == 0 ? QStringList {"insert 0-10"} : QStringList());
    }
    // Nobody could say which one to join.
    for (const QString &name : names)
        QCOMPARE(value(model, WifiNetworkModel::JoinableRole, model.rowOf(name)).toBool(),
                 name != names.at(0) && name != names.at(7));
    mirror.compare();
}

QTEST_GUILESS_MAIN(TestWifiNetworkModel)

#include "tst_wifinetworkmodel.moc"
