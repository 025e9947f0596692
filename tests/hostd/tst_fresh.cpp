// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"

#include <QtCore/QDir>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char OnlyWired[] = "{'interfaces':[{'name':'eth0','type':'wired'}]}";
const QString Fresh = QStringLiteral("--fresh");
const QString Without = QStringLiteral("--without");

bool isThere(const QString &path)
{
    return ZopObject(path, ZopObject::Subscribe, false).isValid();
}

bool create(const char *path)
{
    ZopChangeset values;
    values.assignments.insert(QStringLiteral("mine"), QStringLiteral("yes"));
    return ZopObject::create(QLatin1String(path), values);
}

/*! Of the objects that there can be, those that are there. */
QStringList published()
{
    QStringList paths {interfacePath("eth0"), interfacePath("wlan0"), QLatin1String(Status), QLatin1String(WifiStatus),
                       QLatin1String(TetheringStatus)};
    paths.erase(std::remove_if(paths.begin(), paths.end(), [](const QString &path) { return !isThere(path); }),
                paths.end());
    return paths;
}

} // namespace

/*! What --fresh forgets of former runs, and what it leaves. */
class FreshTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_daemon.reset(); }

    void forgetsWhatThisWorldLacks();
    void makesAnewWhatItPublishes();
    void leavesForeignObjects();
    void leavesTheServicesThatAreLeftOut();
    void leavesWhatAnotherDaemonServes();
    void forgetsBelowAnEmptyRoot();
    void saysWhatItCannotForget();
    void forgetsTheProfile();
    void leavesTheProfileOfAnotherProcess();

private:
    QString storeFile() const { return m_daemon->root() + QStringLiteral("/.morvek-hostd-hotspot.json"); }
    bool store(const QByteArray &profile) const;

    std::unique_ptr<DaemonFixture> m_daemon;
};

/*! With the objects of a former run. */
void FreshTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->start(QStringLiteral("headunit")));
    m_daemon->kill();
    QCOMPARE(published().size(), 5);
}

bool FreshTest::store(const QByteArray &profile) const
{
    QFile file(storeFile());
    return file.open(QIODevice::WriteOnly) && file.write(profile) == profile.size();
}

void FreshTest::forgetsWhatThisWorldLacks()
{
    QVERIFY(m_daemon->startWith(OnlyWired));
    QCOMPARE(published(),
             QStringList({interfacePath("eth0"), QLatin1String(Status), QLatin1String(WifiStatus),
                          QLatin1String(TetheringStatus)}));
    m_daemon->kill();
    QVERIFY(m_daemon->startWith(OnlyWired, {Fresh}));
    QCOMPARE(published(), QStringList({interfacePath("eth0"), QLatin1String(Status)}));
}

void FreshTest::makesAnewWhatItPublishes()
{
    const Seen wlan0 {interfacePath("wlan0")};
    const Seen status {QLatin1String(Status)};
    const Seen wifi {QLatin1String(WifiStatus)};
    const Seen tethering {QLatin1String(TetheringStatus)};
    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {Fresh}));
    for (const Seen *one : {&wlan0, &status, &wifi, &tethering}) {
        QTRY_COMPARE(one->updates.count(), 2);
        QVERIFY(one->update(0).assignments.isEmpty());
        QVERIFY(!one->update(0).removals.isEmpty());
        QVERIFY(!one->update(1).assignments.isEmpty());
        QVERIFY(one->update(1).removals.isEmpty());
    }
}

void FreshTest::leavesForeignObjects()
{
    const QStringList paths {QStringLiteral("/zop/somewhere/one"), QStringLiteral("/zop/services/wifi/mine"),
                             QStringLiteral("/zop/services/networking/all/mine")};
    for (const QString &path : paths)
        QVERIFY(create(qPrintable(path)));
    QVERIFY(m_daemon->startWith(OnlyWired, {Fresh}));
    for (const QString &path : paths)
        QCOMPARE(Seen(path).text("mine"), QStringLiteral("yes"));
}

void FreshTest::leavesTheServicesThatAreLeftOut()
{
    QVERIFY(m_daemon->startWith(OnlyWired, {Fresh, Without, QStringLiteral("wifi")}));
    QCOMPARE(published(), QStringList({interfacePath("eth0"), QLatin1String(Status), QLatin1String(WifiStatus)}));
    m_daemon->kill();
    QVERIFY(m_daemon->startWith(OnlyWired, {Fresh, Without, QStringLiteral("networking")}));
    QCOMPARE(published(), QStringList({interfacePath("eth0"), QLatin1String(Status)}));
}

void FreshTest::leavesWhatAnotherDaemonServes()
{
    const ZopObject wifi(QLatin1String(WifiControl), ZopObject::Publish, true);
    QVERIFY2(wifi.isValid(), qPrintable(wifi.errorString()));
    QVERIFY(m_daemon->startWith(OnlyWired, {Fresh}));
    QCOMPARE(published(), QStringList({interfacePath("eth0"), QLatin1String(Status), QLatin1String(WifiStatus)}));
}

void FreshTest::forgetsBelowAnEmptyRoot()
{
    QVERIFY(QDir(m_daemon->root()).removeRecursively());
    QVERIFY(m_daemon->startWith(OnlyWired, {Fresh}));
    QCOMPARE(published(), QStringList({interfacePath("eth0"), QLatin1String(Status)}));
    QCOMPARE(m_daemon->process().errors(), QByteArray());
}

void FreshTest::saysWhatItCannotForget()
{
    QVERIFY(ZopObject::remove(QLatin1String(TetheringStatus)));
    const ZopObject inTheWay(QLatin1String(TetheringStatus), ZopObject::Publish, true);
    QVERIFY2(inTheWay.isValid(), qPrintable(inTheWay.errorString()));
    const auto ended = HostdProcess::run({Fresh, QStringLiteral("--root"), m_daemon->root()});
    QCOMPARE(ended.code, 1);
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(ended.errors,
             QByteArray("morvek-hostd: cannot remove \"/zop/services/tethering/status\": a control object has "
                        "this path\n"));
}

// What cannot be read any more is forgotten like everything else.
void FreshTest::forgetsTheProfile()
{
    QVERIFY(store("no profile"));
    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {Fresh}));
    QVERIFY(!QFile::exists(storeFile()));
    QVERIFY(!m_daemon->process().errors().contains("morvek-hostd: "));
}

void FreshTest::leavesTheProfileOfAnotherProcess()
{
    QVERIFY(store("no profile"));
    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {Fresh, Without, QStringLiteral("tethering")}));
    QVERIFY(QFile::exists(storeFile()));
    QVERIFY(!m_daemon->process().errors().contains("morvek-hostd: "));
}

QTEST_GUILESS_MAIN(FreshTest)
#include "tst_fresh.moc"
