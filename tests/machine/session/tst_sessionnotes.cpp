// SPDX-License-Identifier: Apache-2.0
#include "sessionnotes.h"

#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

const QString House = QStringLiteral("house");
const QString First = QStringLiteral("first of ours");
const QString Second = QStringLiteral("second of ours");

/*! \a text has single quotes in place of double ones. */
QJsonObject json(const char *text)
{
    return QJsonDocument::fromJson(QByteArray(text).replace('\'', '"')).object();
}

} // namespace

/*! What is noted of a change, and what of the next one. */
class SessionNotesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsWhatWasFirst();
    void forgetsWhatIsUndone();
    void takesWhatSomebodyElseHasSet();
    void tellsConnectionsApart();
    void notesNewConnections();
    void leavesItsOwnConnections();
    void notesSettingsOfTheProfile();
    void knowsItsSettings();
    void forgetsSettingsWithTheirConnection();
    void passesThroughAFile();
    void addsWhatIsNotNoted();
    void readsNonsense();
};

void SessionNotesTest::keepsWhatWasFirst()
{
    std::optional<Changed<QByteArray>> noted;
    Changed<QByteArray>::note(&noted, "automatic", "none");
    Changed<QByteArray>::note(&noted, "none", "manual");
    QCOMPARE(noted->former, QByteArray("automatic"));
    QCOMPARE(noted->ours, QByteArray("manual"));
}

void SessionNotesTest::forgetsWhatIsUndone()
{
    std::optional<Changed<bool>> noted;
    Changed<bool>::note(&noted, true, true);
    QVERIFY(!noted);
    Changed<bool>::note(&noted, true, false);
    QVERIFY(noted);
    Changed<bool>::note(&noted, false, true);
    QVERIFY(!noted);
}

void SessionNotesTest::takesWhatSomebodyElseHasSet()
{
    std::optional<Changed<QByteArray>> noted;
    Changed<QByteArray>::note(&noted, "automatic", "none");
    Changed<QByteArray>::note(&noted, "theirs", "manual");
    QCOMPARE(noted->former, QByteArray("theirs"));
    QCOMPARE(noted->ours, QByteArray("manual"));
}

void SessionNotesTest::tellsConnectionsApart()
{
    DeviceNotes notes;
    QVERIFY(notes.isEmpty());
    QVERIFY(!notes.isOurs(QString()));
    notes.connects(House, First);
    QCOMPARE(*notes.connection, House);
    QVERIFY(notes.isOurs(First));
    QVERIFY(notes.isOurs(QString())); // it has failed
    QVERIFY(!notes.isOurs(House));
    notes.connects(First, Second);
    QCOMPARE(*notes.connection, House);
    QVERIFY(notes.isOurs(First));
    QVERIFY(notes.isOurs(Second));
    QVERIFY(!notes.isDisconnected);
    notes.connects(Second, QString());
    QCOMPARE(*notes.connection, House);
    QVERIFY(notes.isDisconnected);
    QCOMPARE(notes.ours, QStringList({First, Second}));
    notes.connects(QString(), First);
    QCOMPARE(notes.ours, QStringList({First, Second}));
    QVERIFY(!notes.isDisconnected);
    QCOMPARE(*notes.connection, House);
}

void SessionNotesTest::notesNewConnections()
{
    DeviceNotes notes;
    notes.connects(QString(), First);
    QCOMPARE(*notes.connection, QString());
    // Somebody else has connected it in between.
    notes.connects(House, Second);
    QCOMPARE(*notes.connection, House);
    QCOMPARE(notes.ours, QStringList(Second));
}

/*! The manager may refuse the last ones: then those before are still applied. */
void SessionNotesTest::knowsItsSettings()
{
    DeviceNotes notes;
    QVERIFY(!notes.isOurs(QByteArray("automatic")));
    notes.reapplies(House, "automatic", "none");
    QVERIFY(notes.isOurs(QByteArray("none")));
    QVERIFY(!notes.isOurs(QByteArray("automatic")));
    QVERIFY(!notes.isOurs(QByteArray()));
    notes.reapplies(House, "none", "refused");
    QVERIFY(notes.isOurs(QByteArray("none")));
    QVERIFY(notes.isOurs(QByteArray("refused")));
    notes.reapplies(House, "none", "manual");
    QCOMPARE(notes.ipv4->former, QByteArray("automatic"));
    QVERIFY(notes.isOurs(QByteArray("manual")));
    QVERIFY(!notes.isOurs(QByteArray("refused")));
}

/*! Settings of what goes with the session need not be given back. */
void SessionNotesTest::leavesItsOwnConnections()
{
    DeviceNotes notes;
    notes.connects(House, First);
    notes.reapplies(First, "automatic", "none");
    QVERIFY(!notes.ipv4);
}

void SessionNotesTest::notesSettingsOfTheProfile()
{
    DeviceNotes notes;
    notes.reapplies(House, "automatic", "none");
    QCOMPARE(notes.reapplied, House);
    QCOMPARE(notes.ipv4->former, QByteArray("automatic"));
    notes.reapplies(House, "none", "manual");
    QCOMPARE(notes.ipv4->former, QByteArray("automatic"));
    // The same settings, but not ours.
    notes.reapplies(QStringLiteral("office"), "manual", "none");
    QCOMPARE(notes.reapplied, QStringLiteral("office"));
    QCOMPARE(notes.ipv4->former, QByteArray("manual"));
    QCOMPARE(notes.ipv4->ours, QByteArray("none"));
}

void SessionNotesTest::forgetsSettingsWithTheirConnection()
{
    DeviceNotes notes;
    notes.reapplies(House, "automatic", "none");
    notes.connects(House, First);
    QVERIFY(!notes.ipv4);
}

void SessionNotesTest::passesThroughAFile()
{
    SessionNotes notes;
    DeviceNotes &wifi = notes.devices[QStringLiteral("wlan0")];
    wifi.connects(House, First);
    wifi.autoconnect = Changed<bool> {true, false};
    DeviceNotes &wired = notes.devices[QStringLiteral("eth0")];
    wired.reapplies(House, "{'method': <'auto'>}", "{'method': <'disabled'>}");
    notes.power = Changed<bool> {false, true};
    QCOMPARE(QJsonDocument(notes.toJson()).toJson(QJsonDocument::Compact),
             QByteArray(R"({"devices":{"eth0":{"ipv4":{"earlier":"","former":"{'method': <'auto'>}",)"
                        R"("ours":"{'method': <'disabled'>}","profile":"house"}},)"
                        R"("wlan0":{"autoconnect":{"former":true,"ours":false},)"
                        R"("connection":{"former":"house","ours":["first of ours"]}}},)"
                        R"("power":{"former":false,"ours":true}})"));
    const SessionNotes read = SessionNotes::fromJson(notes.toJson());
    QCOMPARE(read.toJson(), notes.toJson());
    QVERIFY(!read.isEmpty());
    QVERIFY(read.devices.value(QStringLiteral("wlan0")).isOurs(First));
}

void SessionNotesTest::addsWhatIsNotNoted()
{
    const auto notesOf = [](const QString &profile, const QString &ours, bool former) {
        SessionNotes notes;
        DeviceNotes &device = notes.devices[QStringLiteral("wlan0")];
        device.connects(profile, ours);
        device.reapplies(profile, profile.toUtf8(), "none");
        device.autoconnect = Changed<bool> {former, !former};
        notes.power = Changed<bool> {former, !former};
        return notes;
    };
    SessionNotes notes = notesOf(House, First, true);
    const QJsonObject before = notes.toJson();
    notes.add(notesOf(QStringLiteral("office"), Second, false));
    QCOMPARE(notes.toJson(), before);
    SessionNotes none;
    none.add(notes);
    QCOMPARE(none.toJson(), before);
}

void SessionNotesTest::readsNonsense()
{
    QVERIFY(SessionNotes::fromJson({}).isEmpty());
    QVERIFY(SessionNotes::fromJson(json("{'devices': [], 'power': {'former': 1, 'ours': false}}")).isEmpty());
    QVERIFY(SessionNotes::fromJson(json("{'devices': {'eth0': {}, 'eth1': 5, 'eth2': {'connection': {'former': 7}}}}"))
                .isEmpty());
    QVERIFY(SessionNotes::fromJson(json("{'power': {'former': true}}")).isEmpty());
}

QTEST_APPLESS_MAIN(SessionNotesTest)

#include "tst_sessionnotes.moc"
