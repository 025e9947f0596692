// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "journalbytes.h"
#include "lockholder.h"

#include <QtTest/QtTest>

#include <functional>

#include <sys/stat.h>

using namespace morvek;

using Damage = std::function<bool(const QString &file)>;
Q_DECLARE_METATYPE(Damage)

namespace {

bool overwrite(const QString &name, qint64 offset, const QByteArray &bytes)
{
    QFile file(name);
    return file.open(QIODevice::ReadWrite) && file.seek(offset < 0 ? file.size() + offset : offset)
        && file.write(bytes) == bytes.size();
}

QByteArray contentOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/*! The same file gets other content. */
bool refill(const QString &name, const QByteArray &bytes)
{
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

/*! Another file takes the place. */
bool replace(const QString &name, const QByteArray &bytes)
{
    const QString other = name + QStringLiteral(".other");
    return refill(other, bytes) && QFile::remove(name) && QFile::rename(other, name);
}

/*! A sound object that the daemon has not made. */
QByteArray foreignObject()
{
    const QString path = QStringLiteral("/zop/test/foreign");
    ZopChangeset values;
    values.assignments.insert(QStringLiteral("foreign"), QStringLiteral("value"));
    ZopObject::create(path, values);
    return contentOf(qEnvironmentVariable("ZOP_ROOT") + path);
}

bool makeFolder(const QString &name)
{
    return QDir().mkpath(name + QStringLiteral("/with/content"));
}

bool makePipe(const QString &name)
{
    return mkfifo(QFile::encodeName(name).constData(), 0600) == 0;
}

/*! What somebody knows of an object who has followed it since it was opened. */
class View
{
public:
    explicit View(const QString &path)
        : m_object(path, ZopObject::Subscribe, false)
    {
        QObject::connect(&m_object, &ZopObject::attributeChanged, [this](const QString &name, const ZopVariant &value) {
            attributes.insert(name, value.toString());
        });
        QObject::connect(&m_object, &ZopObject::attributeRemoved,
                         [this](const QString &name) { attributes.remove(name); });
        m_object.setAttributeCacheEnabled(true);
    }

    QMap<QString, QString> attributes;

private:
    ZopObject m_object;
};

QMap<QString, QString> attributesAt(const QString &path)
{
    return View(path).attributes;
}

const char *const StateObjects[] = {Status, "/zop/services/networking/all/interfaces/eth0", WifiStatus,
                                    TetheringStatus};
const char *const ControlObjects[] = {Control, WifiControl, TetheringControl};

std::map<QString, View> followAll()
{
    std::map<QString, View> views;
    for (const char *name : StateObjects)
        views.emplace(QLatin1String(name), QLatin1String(name));
    return views;
}

QMap<QString, QMap<QString, QString>> attributesOf(const std::map<QString, View> &views)
{
    QMap<QString, QMap<QString, QString>> attributes;
    for (const auto &view : views)
        attributes.insert(view.first, view.second.attributes);
    return attributes;
}

bool isServed(const char *path)
{
    struct stat status;
    const QString file = qEnvironmentVariable("ZOP_ROOT") + QLatin1String(path);
    return lstat(QFile::encodeName(file).constData(), &status) == 0 && S_ISSOCK(status.st_mode)
        && ZopObject(QLatin1String(path), ZopObject::Subscribe, false).isValid();
}

} // namespace

/*! Whatever happens to what the daemons have published, running applications and those that start later agree again. */
class HealingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void aLockedObjectHoldsUpNothingElse();
    void aDaemonEndsWhateverIsLocked();
    void aSpoiltObjectIsMadeAnew_data();
    void aSpoiltObjectIsMadeAnew();
    void anOldCopyIsNotTheObject();
    void whatOthersWriteStays();
    void aKilledWriterMakesNothingVanish();
    void aLostControlObjectIsServedAgain_data();
    void aLostControlObjectIsServedAgain();
    void everythingIsPublishedAgain();
    void aRemovedRootIsTakenAgain();
    void aRootThatAnotherHasTakenIsLeft();
    void theEndOfAFormerDaemonRemovesNothingOfTheNextOne();

private:
    QString file(const QString &path) const { return m_daemon->root() + path; }

    std::unique_ptr<DaemonFixture> m_daemon;
};

void HealingTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")}));
}

void HealingTest::cleanup()
{
    m_daemon.reset();
}

void HealingTest::aLockedObjectHoldsUpNothingElse()
{
    ZopObject wifi(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    ZopObject networking(QLatin1String(Control), ZopObject::ReadWrite, true);
    const Seen status {QLatin1String(WifiStatus)};
    const Seen wlan0(interfacePath("wlan0"));
    {
        const LockHolder holder(file(QLatin1String(WifiStatus)));
        QVERIFY(holder.holds());
        for (const char *power : {"off", "on", "off"})
            QCOMPARE(Request(&wifi, "wifi_power", power).outcome(), QStringLiteral("ok"));
        QTRY_COMPARE(wlan0.text("up"), QStringLiteral("false"));
        QCOMPARE(Request(&networking, "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
        QTRY_COMPARE(m_daemon->process().errors().count("cannot publish"), 1);
        QVERIFY(
            m_daemon->process().errors().contains("morvek-hostd: cannot publish \"/zop/services/wifi/status\": another "
                                                  "process keeps \""
                                                  + file(QLatin1String(WifiStatus)).toUtf8() + "\" locked\n"));
        QCOMPARE(status.updates.count(), 0);
    }
    QTRY_VERIFY(status.updates.count() >= 3); // one more when the station has found the time to connect
    QVERIFY(status.update(0).assignments.value(QStringLiteral("wifi_power")).toString() == QLatin1String("off"));
    QVERIFY(status.update(1).assignments.value(QStringLiteral("wifi_power")).toString() == QLatin1String("on"));
    QTRY_COMPARE(status.text("wifi_power"), QStringLiteral("off"));
    QCOMPARE(m_daemon->process().errors().count("cannot publish"), 1);
}

void HealingTest::aDaemonEndsWhateverIsLocked()
{
    const LockHolder object(file(QLatin1String(WifiStatus)));
    const LockHolder folder(file(QStringLiteral("/zop/services/wifi")));
    const LockHolder interfaces(file(QLatin1String(Interfaces)));
    QVERIFY(object.holds() && folder.holds() && interfaces.holds());
    ZopObject wifi(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&wifi, "wifi_power", "off").outcome(), QStringLiteral("ok"));
    QTRY_VERIFY(m_daemon->process().errors().contains("cannot publish"));
    QCOMPARE(m_daemon->process().terminate(), 0);
}

void HealingTest::aSpoiltObjectIsMadeAnew_data()
{
    QTest::addColumn<Damage>("damage");

    const auto row = [](const char *name, const Damage &damage) { QTest::addRow("%s", name) << damage; };
    const auto other = [](const Damage &make) {
        return [make](const QString &name) { return QFile::remove(name) && make(name); };
    };
    row("emptied", [](const QString &name) { return refill(name, QByteArray()); });
    row("cut in the header", [](const QString &name) { return QFile::resize(name, 20); });
    row("cut behind the header", [](const QString &name) { return QFile::resize(name, 48); });
    row("cut in the last record", [](const QString &name) { return QFile::resize(name, QFile(name).size() - 1); });
    row("spoilt header", [](const QString &name) { return overwrite(name, 10, "xxx"); });
    row("spoilt first record", [](const QString &name) { return overwrite(name, 90, "xxx"); });
    row("spoilt last byte",
        [](const QString &name) { return overwrite(name, -1, QByteArray(1, char(contentOf(name).back() + 1))); });
    row("zeroes", [](const QString &name) { return overwrite(name, 0, QByteArray(int(QFile(name).size()), '\0')); });
    row("content of another", [](const QString &name) { return refill(name, foreignObject()); });
    row("removed", [](const QString &name) { return QFile::remove(name); });
    row("file that is none", [](const QString &name) { return replace(name, "no object"); });
    row("another object", [](const QString &name) { return replace(name, foreignObject()); });
    row("pipe", other(makePipe));
    row("folder", other([](const QString &name) { return QDir().mkpath(name); }));
    row("folder with content", other(makeFolder));
    row("link", other([](const QString &name) { return QFile::link(QStringLiteral("/dev/zero"), name); }));
    row("hidden pipes", [](const QString &name) {
        const QString hidden = QFileInfo(name).path() + QStringLiteral("/.") + QFileInfo(name).fileName();
        return makePipe(hidden + QStringLiteral(".new")) && makePipe(hidden + QStringLiteral(".old"))
            && QFile::remove(name);
    });
    row("hidden folders", [](const QString &name) {
        const QString hidden = QFileInfo(name).path() + QStringLiteral("/.") + QFileInfo(name).fileName();
        return makeFolder(hidden + QStringLiteral(".new")) && makeFolder(hidden + QStringLiteral(".old"))
            && QFile::remove(name);
    });
}

void HealingTest::aSpoiltObjectIsMadeAnew()
{
    QFETCH(Damage, damage);
    const std::map<QString, View> running = followAll();
    const auto published = attributesOf(running);
    for (const char *name : StateObjects)
        QVERIFY2(damage(file(QLatin1String(name))), name);
    for (const char *name : StateObjects) {
        const QByteArray line = QByteArray("\"") + name + "\" is published anew";
        QTRY_VERIFY2_WITH_TIMEOUT(m_daemon->process().errors().contains(line), name, Patience);
        QTRY_COMPARE_WITH_TIMEOUT(attributesAt(QLatin1String(name)), published[QLatin1String(name)], Patience);
        QTRY_COMPARE_WITH_TIMEOUT(running.at(QLatin1String(name)).attributes, published[QLatin1String(name)], Patience);
    }
}

void HealingTest::anOldCopyIsNotTheObject()
{
    const QString path = QLatin1String(WifiStatus);
    const QByteArray copy = contentOf(file(path));
    ZopObject wifi(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&wifi, "wifi_power", "off").outcome(), QStringLiteral("ok"));
    View running(path);
    QTRY_COMPARE(running.attributes.value(QStringLiteral("wifi_power")), QStringLiteral("off"));
    const auto published = attributesAt(path);
    for (const Damage &damage : {Damage([&copy](const QString &name) { return replace(name, copy); }),
                                 Damage([&copy](const QString &name) { return refill(name, copy); })}) {
        QVERIFY(damage(file(path)));
        QTRY_COMPARE(attributesAt(path), published);
        QTRY_COMPARE(running.attributes, published);
    }
}

void HealingTest::whatOthersWriteStays()
{
    const QString path = QLatin1String(WifiStatus);
    ZopObject other(path, ZopObject::ReadWrite, false);
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("other"), QString(100000, QLatin1Char('x')));
    // Until the file has been replaced by its next generation, too.
    for (int i = 0; i < 20; ++i)
        QVERIFY(other.setAttributes(changes));
    // What comes after it is mended after it.
    QVERIFY(QFile::remove(file(QLatin1String(TetheringStatus))));
    QTRY_VERIFY(m_daemon->process().errors().contains("is published anew"));
    QVERIFY(QFile::remove(file(QLatin1String(Status))));
    QTRY_COMPARE(m_daemon->process().errors().count("is published anew"), 2);
    QVERIFY(!m_daemon->process().errors().contains("\"/zop/services/wifi/status\" is published anew"));
    QCOMPARE(attributesAt(path).value(QStringLiteral("other")).size(), 100000);
}

void HealingTest::aKilledWriterMakesNothingVanish()
{
    const QString path = QLatin1String(WifiStatus);
    View running(path);
    const auto published = running.attributes;
    QByteArray torn = JournalBytes::recordHeader(5, 1000, 0) + "what was written of it";
    torn.replace(0, 8, contentOf(file(path)).mid(8, 8)); // the marker
    QFile object(file(path));
    QVERIFY(object.open(QIODevice::Append) && object.write(torn) == torn.size() && object.flush());
    QTRY_VERIFY(!contentOf(file(path)).contains("what was written of it"));
    QVERIFY(!m_daemon->process().errors().contains("is published anew"));
    QCOMPARE(attributesAt(path), published);
    ZopObject wifi(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&wifi, "wifi_power", "off").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(running.attributes.value(QStringLiteral("wifi_power")), QStringLiteral("off"));
}

void HealingTest::aLostControlObjectIsServedAgain_data()
{
    QTest::addColumn<Damage>("damage");

    const auto row = [](const char *name, const Damage &make) {
        const Damage damage = [make](const QString &file) { return QFile::remove(file) && make(file); };
        QTest::addRow("%s", name) << damage;
    };
    row("removed", [](const QString &) { return true; });
    row("pipe", makePipe);
    row("folder", makeFolder);
    row("file", [](const QString &name) { return refill(name, "no object"); });
    row("object", [](const QString &name) { return refill(name, foreignObject()); });
    row("hidden folder", [](const QString &name) {
        return makeFolder(QFileInfo(name).path() + QStringLiteral("/.") + QFileInfo(name).fileName()
                          + QStringLiteral(".new"));
    });
}

void HealingTest::aLostControlObjectIsServedAgain()
{
    QFETCH(Damage, damage);
    ZopObject connected(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    for (const char *name : ControlObjects)
        QVERIFY2(damage(file(QLatin1String(name))), name);
    for (const char *name : ControlObjects)
        QTRY_VERIFY2_WITH_TIMEOUT(isServed(name), name, Patience);
    ZopObject fresh(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&fresh, "wifi_power", "off").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(&connected, "wifi_power", "on").outcome(), QStringLiteral("ok"));
    QCOMPARE(m_daemon->process().terminate(), 0);
    for (const char *name : ControlObjects)
        QVERIFY(!QFile::exists(file(QLatin1String(name))));
}

void HealingTest::everythingIsPublishedAgain()
{
    const std::map<QString, View> running = followAll();
    const auto published = attributesOf(running);
    QVERIFY(QDir(file(QStringLiteral("/zop"))).removeRecursively());
    for (const char *name : StateObjects) {
        QTRY_COMPARE(attributesAt(QLatin1String(name)), published[QLatin1String(name)]);
        QTRY_COMPARE(running.at(QLatin1String(name)).attributes, published[QLatin1String(name)]);
    }
    for (const char *name : ControlObjects)
        QTRY_VERIFY(isServed(name));
}

void HealingTest::aRemovedRootIsTakenAgain()
{
    const auto published = attributesAt(QLatin1String(Status));
    View running {QLatin1String(Status)};
    QVERIFY(QDir(m_daemon->root()).removeRecursively());
    QTRY_COMPARE(attributesAt(QLatin1String(Status)), published);
    QTRY_COMPARE(running.attributes, published);
    for (const char *name : ControlObjects)
        QTRY_VERIFY(isServed(name));
    QCOMPARE(HostdProcess::run({}, m_daemon->root()).code, 5);
}

void HealingTest::aRootThatAnotherHasTakenIsLeft()
{
    m_daemon->process().signal(SIGSTOP);
    QVERIFY(QDir(m_daemon->root()).removeRecursively());
    HostdProcess next;
    QVERIFY2(next.start(m_daemon->root(), {}), next.errors().constData());
    const auto published = attributesAt(QLatin1String(WifiStatus));
    m_daemon->process().errors();
    m_daemon->process().signal(SIGCONT);
    QCOMPARE(m_daemon->process().waitForEnd(), 5);
    QVERIFY2(m_daemon->process().errors().endsWith("morvek-hostd: another morvek-hostd publishes below \""
                                                   + m_daemon->root().toUtf8() + "\"\n"),
             m_daemon->process().errors().constData());
    QCOMPARE(m_daemon->process().errors().count("morvek-hostd: "), 1);
    QCOMPARE(attributesAt(QLatin1String(WifiStatus)), published);
    ZopObject wifi(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&wifi, "wifi_power", "off").outcome(), QStringLiteral("ok"));
    QCOMPARE(next.terminate(), 0);
    QCOMPARE(next.errors(), QByteArray());
}

void HealingTest::theEndOfAFormerDaemonRemovesNothingOfTheNextOne()
{
    m_daemon->process().signal(SIGSTOP);
    QVERIFY(QDir().rename(m_daemon->root(), m_daemon->root() + QStringLiteral(".away")));
    HostdProcess next;
    QVERIFY2(next.start(m_daemon->root(), {}), next.errors().constData());
    // It ends for the signal's sake before it looks at the root, or for the root's.
    m_daemon->process().signal(SIGTERM);
    m_daemon->process().signal(SIGCONT);
    QVERIFY(m_daemon->process().waitForEnd() != -1);
    for (const char *name : ControlObjects)
        QVERIFY2(isServed(name), name);
    QCOMPARE(next.terminate(), 0);
}

QTEST_GUILESS_MAIN(HealingTest)
#include "tst_healing.moc"
