// SPDX-License-Identifier: Apache-2.0
#include "modelmirror.h"
#include "wifiscan.h"

#include <QtCore/QRandomGenerator>
#include <QtCore/QRegularExpression>
#include <QtTest/QTest>

#include <algorithm>
#include <limits>

using namespace morvek;
using namespace WifiScan;

namespace {

/*! The rules of the order, put in another way than the model does. */
class Oracle
{
public:
    /*! Which rows are told for the step from \a before to the scan \a found with the network \a inUse. */
    QStringList step(const QString &before, const QVector<Found> &found, const QString &inUse);
    QString order() const { return m_order; }
    int moved() const { return m_moved; }

private:
    double levelOf(QChar name) const { return m_levels.value(name, -std::numeric_limits<double>::infinity()); }
    QString settled(QString order) const;

    QMap<QChar, double> m_levels;
    QString m_order;
    int m_moved = 0;
};

/*! Neighbours change places, topmost first, until none is stronger by 6 dB than the one above. */
QString Oracle::settled(QString order) const
{
    for (int row = 1; row < order.size(); ++row) {
        const double above = levelOf(order[row - 1]);
        const double below = levelOf(order[row]);
        if (below > above && below - above >= 6) {
            std::iter_swap(order.begin() + row - 1, order.begin() + row);
            row = 0;
        }
    }
    return order;
}

/*! The most rows of \a before that come in the same order in \a after, by trying all sets of them. */
int mostThatStay(const QString &before, const QString &after)
{
    int most = 0;
    for (unsigned set = 0; set < 1U << unsigned(before.size()); ++set) {
        QString some;
        for (int row = 0; row < before.size(); ++row) {
            if (set & 1U << unsigned(row))
                some += before[row];
        }
        QString same;
        for (const QChar name : after) {
            if (some.contains(name))
                same += name;
        }
        if (same == some)
            most = std::max(most, int(some.size()));
    }
    return most;
}

/*! "remove 1-2" and so on for each run of rows of \a order that \a others does not have. */
QStringList runs(const QString &verb, const QString &order, const QString &others)
{
    QStringList told;
    for (int first = 0; first < order.size(); ++first) {
        int end = first;
        while (end < order.size() && !others.contains(order[end]))
            ++end;
        if (end == first)
            continue;
        told += QStringLiteral("%1 %2-%3").arg(verb).arg(first).arg(end - 1);
        first = end;
    }
    return told;
}

QStringList Oracle::step(const QString &before, const QVector<Found> &found, const QString &inUse)
{
    m_levels.clear();
    QString names = inUse;
    for (const Found &one : found) {
        if (!names.contains(one.ssid))
            names += one.ssid;
        if (one.level != 0)
            m_levels[one.ssid[0]] = std::max(levelOf(one.ssid[0]), double(one.level));
    }
    QString kept;
    for (const QChar name : before) {
        if (names.contains(name))
            kept += name;
    }
    QString all = kept;
    all.remove(inUse);
    all = settled(all);
    if (kept.contains(inUse))
        all.prepend(inUse);
    m_moved = kept.size() - mostThatStay(kept, all);

    std::sort(names.begin(), names.end(), [this](QChar one, QChar other) {
        return levelOf(one) != levelOf(other) ? levelOf(one) > levelOf(other) : one < other;
    });
    for (const QChar name : qAsConst(names)) {
        if (all.contains(name))
            continue;
        int row = all.startsWith(inUse) ? inUse.size() : 0;
        while (row < all.size() && levelOf(all[row]) >= levelOf(name))
            ++row;
        all.insert(name == inUse ? 0 : row, name);
    }
    m_order = all;
    QStringList told = runs(QStringLiteral("remove"), before, kept);
    std::reverse(told.begin(), told.end());
    return told + runs(QStringLiteral("insert"), all, kept);
}

QVector<Found> randomScan(QRandomGenerator *random)
{
    QVector<Found> found;
    for (const char name : {'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H'}) {
        if (random->bounded(5) != 0)
            found.append(
                accessPoint(QString(QLatin1Char(name)), random->bounded(10) == 0 ? 0 : -random->bounded(60, 85)));
    }
    std::shuffle(found.begin(), found.end(), *random);
    return found;
}

/*! How many rows are moved by what is \a told. */
int movedRows(const QStringList &told)
{
    int rows = 0;
    for (const QString &change : told) {
        const auto match = QRegularExpression(QStringLiteral("move (\\d+)-(\\d+) to")).match(change);
        if (match.hasMatch())
            rows += match.captured(2).toInt() - match.captured(1).toInt() + 1;
    }
    return rows;
}

} // namespace

/*! In which order the rows come, and with which changes of rows. */
class TestWifiNetworkOrder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void scans_data();
    void scans();
    void networkInUse();
    void driftingScan();
    void fewestMoves();
    void allTurnedAround();
};

void TestWifiNetworkOrder::scans_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("order");
    QTest::addColumn<QStringList>("told");
    const QString none;
    const auto row = [](const char *name, const char *first, const char *second, const char *order,
                        const QStringList &told) {
        QTest::newRow(name) << QString(QLatin1String(first)) << QString(QLatin1String(second))
                            << QString(QLatin1String(order)) << told;
    };
    row("new rows by level", "", "C-70 A-50 B-60", "ABC", {"insert 0-2"});
    row("new rows that are as strong by name", "", "C-50 A-50 B-50", "ABC", {"insert 0-2"});
    row("new rows a decibel apart", "", "A-51 B-50", "BA", {"insert 0-1"});
    row("unknown levels last", "", "A0 B-99 C0", "BAC", {"insert 0-2"});
    row("unknown is weaker than the weakest", "", "A0 B-2147483648", "BA", {"insert 0-1"});
    row("the strongest number", "", "A-20 B2147483647", "BA", {"insert 0-1"});
    row("doubled names, the strongest counts", "", "A-80 B-60 A-50 A-70 A0", "AB", {"insert 0-1"});
    row("nothing", "A-50 B-60", "", "", {"remove 0-1"});
    row("the same", "A-50 B-60", "B-60 A-50", "AB", {});

    row("5 dB stronger stays", "A-60 B-62", "A-60 B-55", "AB", {"change 1-1 level bars"});
    row("6 dB stronger passes", "A-60 B-62", "A-60 B-54", "BA", {"move 0-0 to 2", "change 0-0 level bars"});
    row("5 dB weaker stays", "A-60 B-62", "A-67 B-62", "AB", {"change 0-0 level bars"});
    row("6 dB weaker is passed", "A-60 B-62", "A-68 B-62", "BA", {"move 0-0 to 2", "change 1-1 level bars"});
    row("known passes unknown", "A-60 B-62", "A0 B-2147483648", "BA", {"move 0-0 to 2", "change 0-1 level bars"});
    row("unknown passes nothing", "A-60 B-62", "A-2147483648 B0", "AB", {"change 0-1 level bars"});
    row("no overflow", "A-60 B-62", "A-2147483648 B2147483647", "BA", {"move 0-0 to 2", "change 0-1 level bars"});
    row("stops at the first that it does not pass", "A-60 B-61 C-62 D-63", "A-70 B-65 C-72 D-63", "ABDC",
        {"move 2-2 to 4", "change 0-0 level bars", "change 1-1 level", "change 3-3 level bars"});
    row("one goes to the end", "A-50 B-60 C-62 D-64", "A-90 B-60 C-62 D-64", "BCDA",
        {"move 0-0 to 4", "change 3-3 level bars"});
    row("one comes to the top", "A-50 B-60 C-62 D-64", "A-50 B-60 C-62 D-44", "DABC",
        {"move 3-3 to 0", "change 0-0 level bars"});
    row("two change places", "A-50 B-60 C-70", "A-50 B-72 C-66", "ACB",
        {"move 1-1 to 3", "change 1-1 level", "change 2-2 level bars"});
    row("neighbours are moved together", "A-50 B-51 C-60 D-61 E-62", "A-70 B-71 C-60 D-61 E-62", "CDEAB",
        {"move 0-1 to 5", "change 3-4 level bars"});
    row("neighbours that part", "A-50 B-51 C-60 D-61 E-70 F-71 G-72", "A-64 B-80 C-60 D-61 E-70 F-71 G-72", "ACDEFGB",
        {"move 1-1 to 7", "change 0-0 level bars", "change 6-6 level bars"});
    row("two to two places", "A-60 B-61 C-62 D-90", "A-60 B-50 C-62 D-40", "DBAC",
        {"move 3-3 to 0", "move 1-1 to 3", "change 0-1 level bars"});
    row("a new one among rows that are not in order", "A-60 B-62 C-64", "A-60 B-55 C-50 D-58", "DABC",
        {"insert 0-0", "change 2-3 level bars"});
    row("a new one comes after one as strong", "A-60 C-62", "A-60 B-60 C-62", "ABC", {"insert 1-1"});
    row("a new one comes after all as strong", "A-60 C-62", "A-60 B-60 C-60", "ACB",
        {"insert 2-2", "change 1-1 level"});
    row("new ones at three places", "B-60 D-70", "A-50 B-60 C-65 D-70 E-80", "ABCDE",
        {"insert 0-0", "insert 2-2", "insert 4-4"});
    row("some go, from below", "A-50 B-55 C-60 D-65 E-70 F-75", "A-50 D-65 F-75", "ADF", {"remove 4-4", "remove 1-2"});
    row("go, move and come", "A-50 B-55 C-60 D-65", "A-50 C-70 D-60 E-40", "EADC",
        {"remove 1-1", "move 1-1 to 3", "insert 0-0", "change 2-2 level", "change 3-3 level bars"});
}

void TestWifiNetworkOrder::scans()
{
    QFETCH(const QString, first);
    QFETCH(const QString, second);
    QFETCH(const QStringList, told);
    WifiNetworkModel model;
    model.setFound(scan(first));
    ModelMirror mirror(&model);
    model.setFound(scan(second));
    QTEST(order(model), "order");
    QCOMPARE(mirror.takeTold(), told);
    mirror.compare();
    model.setFound(scan(second));
    QCOMPARE(mirror.takeTold(), QStringList());
}

void TestWifiNetworkOrder::networkInUse()
{
    WifiNetworkModel model;
    ModelMirror mirror(&model);
    model.setFound(scan(QStringLiteral("A-50 B-60 C-70 D-80")));
    QCOMPARE(mirror.takeTold(), QStringList {"insert 0-3"});

    model.setInUse(QStringLiteral("C"), security(Wpa2));
    QCOMPARE(order(model), QStringLiteral("CABD"));
    QCOMPARE(mirror.takeTold(), (QStringList {"move 2-2 to 0", "change 0-0 inUse"}));
    model.setInUse(QStringLiteral("C"), security(Wpa2));
    QCOMPARE(mirror.takeTold(), QStringList());

    // The strongest does not pass it.
    model.setFound(scan(QStringLiteral("A-20 B-60 C-90 D-80")));
    QCOMPARE(order(model), QStringLiteral("CABD"));
    QCOMPARE(mirror.takeTold(), (QStringList {"change 0-0 level bars", "change 1-1 level"}));

    // What is no longer in use is passed by what is stronger by 6 dB.
    model.setInUse(QStringLiteral("D"), security(Wpa2));
    QCOMPARE(order(model), QStringLiteral("DABC"));
    QCOMPARE(mirror.takeTold(),
             (QStringList {"move 3-3 to 0", "move 1-1 to 4", "change 0-0 inUse", "change 3-3 inUse"}));
    model.setInUse(QStringLiteral("B"), security(Wpa2));
    QCOMPARE(order(model), QStringLiteral("BADC"));
    QCOMPARE(mirror.takeTold(),
             (QStringList {"move 1-1 to 3", "move 0-0 to 3", "change 0-0 inUse", "change 2-2 inUse"}));

    // No scan finds it: it comes, and goes with its use.
    model.setInUse(QStringLiteral("X"), security(Wpa2));
    QCOMPARE(order(model), QStringLiteral("XABDC"));
    QCOMPARE(mirror.takeTold(), (QStringList {"move 0-0 to 2", "insert 0-0", "change 2-2 inUse"}));
    model.setFound({});
    QCOMPARE(order(model), QStringLiteral("X"));
    QCOMPARE(mirror.takeTold(), QStringList {"remove 1-4"});
    model.setFound(scan(QStringLiteral("A-30 X-80")));
    QCOMPARE(order(model), QStringLiteral("XA"));
    QCOMPARE(mirror.takeTold(), (QStringList {"insert 1-1", "change 0-0 level bars accessPoints"}));
    model.setInUse(QString(), NetworkSecurity());
    QCOMPARE(order(model), QStringLiteral("AX"));
    QCOMPARE(mirror.takeTold(), (QStringList {"move 0-0 to 2", "change 1-1 inUse"}));
    model.setInUse(QStringLiteral("Y"), security(Wpa2));
    model.setInUse(QStringLiteral("X"), security(Wpa2));
    QCOMPARE(order(model), QStringLiteral("XA"));
    QCOMPARE(mirror.takeTold(), (QStringList {"insert 0-0", "remove 0-0", "move 0-0 to 2", "change 0-0 inUse"}));
    mirror.compare();
}

void TestWifiNetworkOrder::driftingScan()
{
    WifiNetworkModel model;
    ModelMirror mirror(&model);
    int rising = -90;
    const auto drift = [&](int step, int most) {
        QVector<Found> found;
        for (int i = 0; i < 199; ++i)
            found.append(accessPoint(QStringLiteral("Network %1").arg(i, 3, 10, QLatin1Char('0')),
                                     -40 - i / 5 + (i * 7 + step * 11) % (2 * most + 1) - most));
        found.append(accessPoint(QStringLiteral("rising"), rising));
        model.setFound(found);
        return mirror.takeTold();
    };
    QCOMPARE(drift(0, 0), QStringList {"insert 0-199"});
    // No two have come closer by more than 5 dB.
    for (int step = 1; step < 60; ++step) {
        const QStringList told = drift(step, 2);
        QVERIFY(!told.isEmpty());
        QCOMPARE(told.filter(QStringLiteral("change")), told);
    }
    drift(60, 0);
    // It passes those at -79 dBm, the weakest, and then all, by one change of rows each time.
    for (const auto &[level, to] : {std::make_pair(-73, 195), std::make_pair(-72, 190), std::make_pair(-34, 0)}) {
        rising = level;
        const QStringList told = drift(60, 0);
        QCOMPARE(model.rowOf(QStringLiteral("rising")), to);
        QCOMPARE(told.filter(QStringLiteral("change")).size(), 1);
        QCOMPARE(told.size(), 2);
        QVERIFY2(told.constFirst().startsWith(QLatin1String("move")), qPrintable(told.constFirst()));
    }
    mirror.compare();
}

void TestWifiNetworkOrder::fewestMoves()
{
    QRandomGenerator random(20);
    WifiNetworkModel model;
    ModelMirror mirror(&model);
    QString inUse;
    int moved = 0;
    for (int step = 0; step < 400; ++step) {
        const QString before = order(model);
        const QVector<Found> found = randomScan(&random);
        Oracle oracle;
        const QStringList told = oracle.step(before, found, inUse);
        model.setFound(found);
        const QStringList changes = mirror.takeTold();
        const QString about =
            before + QLatin1String(" to ") + order(model) + QLatin1String(": ") + changes.join(QLatin1String(", "));
        QVERIFY2(order(model) == oracle.order(), qPrintable(about + QLatin1String(", not ") + oracle.order()));
        QVERIFY2(movedRows(changes) == oracle.moved(), qPrintable(about));
        QStringList others = changes.filter(QStringLiteral("remove")) + changes.filter(QStringLiteral("insert"));
        QCOMPARE(others, told);
        mirror.compare();
        moved += oracle.moved();
        if (random.bounded(4) == 0) {
            inUse = random.bounded(3) == 0 ? QString() : QString(QLatin1Char(char('A' + random.bounded(9))));
            model.setInUse(inUse, security(Wpa2));
            mirror.takeTold();
        }
    }
    QVERIFY2(moved > 400, qPrintable(QString::number(moved))); // it was not in vain
}

void TestWifiNetworkOrder::allTurnedAround()
{
    constexpr int Count = 2000;
    WifiNetworkModel model;
    ModelMirror mirror(&model);
    const auto levels = [&](int first, int step) {
        QVector<Found> found;
        for (int i = 0; i < Count; ++i)
            found.append(accessPoint(QString::number(i), first + i * step));
        model.setFound(found);
    };
    levels(-100000, -6);
    QCOMPARE(mirror.takeTold(), QStringList {"insert 0-1999"});
    levels(-100000, 5);
    QCOMPARE(mirror.takeTold().filter(QStringLiteral("move")), QStringList());
    levels(-100000, 6);
    QCOMPARE(model.rowOf(QStringLiteral("1999")), 0);
    QCOMPARE(model.rowOf(QStringLiteral("0")), 1999);
    QCOMPARE(mirror.takeTold().filter(QStringLiteral("move")).size(), 1999);
    mirror.compare();
}

QTEST_GUILESS_MAIN(TestWifiNetworkOrder)

#include "tst_wifinetworkorder.moc"
