// SPDX-License-Identifier: Apache-2.0
#include "sessionfile.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

const QVector<Service> Wired {Service::Networking};
const QVector<Service> Radios {Service::Wifi, Service::Tethering};
const QVector<Service> All {Service::Networking, Service::Wifi, Service::Tethering};

SessionNotes notesOf(const char *interface, const char *profile)
{
    SessionNotes notes;
    notes.devices[QLatin1String(interface)].connects(QLatin1String(profile), QStringLiteral("ours"));
    return notes;
}

} // namespace

/*! Which notes of others are taken up. */
class SessionFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void leavesThoseOfOthers();
    void takesUpThoseThatHaveEnded();
    void addsThemUp();
    void tellsWhatCannotBeRead();

private:
    QString root() const { return m_folder->path(); }
    QStringList files() const { return QDir(root()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot); }
    void write(const QVector<Service> &served, const SessionNotes &notes) const
    {
        QString error;
        QVERIFY(SessionFile(root(), served).write(notes, &error));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QStringList m_unread;
};

void SessionFileTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_unread.clear();
}

void SessionFileTest::leavesThoseOfOthers()
{
    write(Wired, notesOf("eth0", "house"));
    QVERIFY(SessionFile(root(), Radios).takeUp(&m_unread).isEmpty());
    QCOMPARE(files(), QStringList(QStringLiteral(".morvek-hostd-session.networking.json")));
    write(Wired, SessionNotes());
    QCOMPARE(files(), QStringList());
    QCOMPARE(m_unread, QStringList());
}

void SessionFileTest::takesUpThoseThatHaveEnded()
{
    write(Radios, notesOf("wlan0", "house"));
    const QVector<Service> hotspot {Service::Tethering};
    const SessionNotes notes = SessionFile(root(), hotspot).takeUp(&m_unread);
    QCOMPARE(notes.toJson(), notesOf("wlan0", "house").toJson());
    QCOMPARE(files(), QStringList(QStringLiteral(".morvek-hostd-session.tethering.json")));
    QCOMPARE(SessionFile(root(), hotspot).takeUp(&m_unread).toJson(), notes.toJson());
    QCOMPARE(files(), QStringList(QStringLiteral(".morvek-hostd-session.tethering.json")));
    QCOMPARE(m_unread, QStringList());
}

void SessionFileTest::addsThemUp()
{
    SessionNotes wired = notesOf("eth0", "house");
    wired.devices[QStringLiteral("wlan0")].reapplies(QStringLiteral("garage"), "automatic", "manual");
    write(Wired, wired);
    SessionNotes radios = notesOf("wlan0", "garage");
    radios.devices[QStringLiteral("wlan0")].autoconnect = Changed<bool> {true, false};
    radios.power = Changed<bool> {true, false};
    write(Radios, radios);
    const SessionNotes notes = SessionFile(root(), All).takeUp(&m_unread);
    QCOMPARE(notes.devices.size(), 2);
    QCOMPARE(*notes.devices.value(QStringLiteral("eth0")).connection, QStringLiteral("house"));
    const DeviceNotes wifi = notes.devices.value(QStringLiteral("wlan0"));
    QCOMPARE(*wifi.connection, QStringLiteral("garage"));
    QCOMPARE(wifi.ours, QStringList(QStringLiteral("ours")));
    QCOMPARE(wifi.reapplied, QStringLiteral("garage"));
    QCOMPARE(wifi.ipv4->former, QByteArray("automatic"));
    QCOMPARE(wifi.autoconnect->former, true);
    QCOMPARE(notes.power->former, true);
    QCOMPARE(files(), QStringList(QStringLiteral(".morvek-hostd-session.networking.wifi.tethering.json")));
}

/*! It stays where it is. */
void SessionFileTest::tellsWhatCannotBeRead()
{
    const QString name = QStringLiteral(".morvek-hostd-session.networking.json");
    QVERIFY(QDir(root()).mkdir(name));
    write(Radios, notesOf("wlan0", "house"));
    QCOMPARE(SessionFile(root(), All).takeUp(&m_unread).devices.size(), 1);
    QCOMPARE(m_unread, QStringList(QStringLiteral("\"%1/%2\": is not a file of at most 64 KiB").arg(root(), name)));
    QVERIFY(files().contains(name));
}

QTEST_APPLESS_MAIN(SessionFileTest)

#include "tst_sessionfile.moc"
