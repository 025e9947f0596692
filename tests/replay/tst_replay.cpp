// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "listener.h"
#include "recordprocess.h"
#include "stageclient.h"

#include <QtCore/QRegularExpression>

using namespace morvek;

namespace {

// Each event is one update of one object, so that whoever listens hears of it on its own: the ranking is told before an
// interface comes or goes. "%1" is the timeline.
const char Story[] = R"({
    'interfaces': [
        { 'name': 'eth0', 'type': 'wired', 'link_address': '02:00:00:00:10:01', 'connected': true,
          'lease': { 'ip_addresses': ['10.20.0.40/255.255.0.0'], 'ip_gateway': ['10.20.0.1'] } },
        { 'name': 'eth0.5', 'type': 'wired', 'parent_interface': 'eth0',
          'manual': { 'ip_addresses': ['172.16.5.2/255.255.255.0'], 'ip_gateway': ['172.16.5.1'] } },
        { 'name': 'wlan0', 'type': 'wifi', 'link_address': '02:00:00:00:10:02' },
        { 'name': 'usb0', 'type': 'usb', 'connected': false,
          'lease': { 'ip_addresses': ['192.168.42.129/255.255.255.0'], 'ip_gateway': ['192.168.42.1'] } },
        { 'name': 'veth0', 'type': 'wired', 'connected': false }
    ],
    'priority': ['wlan0', 'eth0', 'usb0', 'eth0.5', 'veth0'],
    'wifi': {
        'interface': 'wlan0', 'connected': '02:00:00:00:20:01',
        'access_points': [
            { 'bssid': '02:00:00:00:20:01', 'ssid': 'Home', 'frequency': 2412, 'signal_level': -48,
              'flags': ['WPA2-PSK-CCMP', 'ESS'], 'passkey': 'correct horse',
              'lease': { 'ip_addresses': ['192.168.43.17/255.255.255.0'], 'ip_gateway': ['192.168.43.1'] } },
            { 'bssid': '02:00:00:00:20:02', 'ssid': 'Home', 'frequency': 5180, 'signal_level': -60,
              'flags': ['WPA2-PSK-CCMP', 'ESS'], 'passkey': 'correct horse',
              'lease': { 'ip_addresses': ['192.168.43.17/255.255.255.0'], 'ip_gateway': ['192.168.43.1'] } },
            { 'bssid': '02:00:00:00:20:03', 'ssid': 'Caf\u00e9', 'frequency': 2462, 'signal_level': -70,
              'flags': ['ESS'] }
        ]
    },
    'hotspot': { 'profile': { 'ssid': 'Car', 'passphrase': 'drive safely', 'mhs_band': '5.0', 'max_num_sta': 10,
        'security_type': 'wpa2', 'autoshutdown_time': 600, 'privacy': false, 'block_conn': false } },
    'timeline': [%1]
})";

const QStringList Events {
    QStringLiteral("'event': 'set', 'interface': 'eth0', 'attributes': { 'connected': false, 'ip_addresses': [] }"),
    QStringLiteral("'event': 'default', 'interface': 'wlan0'"),
    QStringLiteral("'event': 'priority', 'order': ['eth0', 'usb0', 'wlan0', 'eth0.5', 'veth0']"),
    QStringLiteral("'event': 'set', 'interface': 'eth0', 'attributes': { 'connected': true, 'ip_addresses': "
                   "['10.20.0.41/255.255.0.0'] }"),
    QStringLiteral("'event': 'set', 'interface': 'eth0', 'attributes': { 'mtu': 1500 }"),
    QStringLiteral("'event': 'set', 'interface': 'eth0', 'attributes': { 'mtu': 1500 }"),
    QStringLiteral("'event': 'set', 'interface': 'eth0', 'attributes': { 'link_address': { 'base64': '/wD+' } }"),
    QStringLiteral("'event': 'remove', 'interface': 'eth0', 'attributes': ['link_address']"),
    QStringLiteral("'event': 'set', 'object': 'wifi/status', 'attributes': { 'wifi_status': { 'encoding': 'json', "
                   "'text': '{\\'bssid\\':\\'02:00:00:00:20:02\\',\\'ssid\\':\\'Home\\',\\'key_mgmt\\':"
                   "\\'WPA2-PSK\\',\\'pairwise_cipher\\':\\'CCMP\\'}' } }"),
    QStringLiteral("'event': 'wifi-event', 'text': 'CTRL-EVENT-NOBODY-KNOWS'"),
    QStringLiteral("'event': 'remove', 'object': 'wifi/status', 'attributes': ['wifi_status']"),
    QStringLiteral(
        "'event': 'set', 'object': 'status_public', 'attributes': { 'priority': ['eth0','wlan0','eth0.5','veth0'] }"),
    QStringLiteral("'event': 'vanish', 'interface': 'usb0'"),
    QStringLiteral("'event': 'set', 'object': 'status_public', 'attributes': { 'priority': "
                   "['eth0','usb0','wlan0','eth0.5','veth0'] }"),
    QStringLiteral("'event': 'appear', 'interface': 'usb0'"),
    QStringLiteral("'event': 'set', 'object': 'tethering/status', 'attributes': { 'state': 'ACTIVE' }"),
    QStringLiteral("'event': 'default', 'interface': ''"),
    QStringLiteral("'event': 'set', 'interface': 'wlan0', 'attributes': { 'ip_addresses': 'garbage' }"),
    QStringLiteral("'event': 'set', 'object': 'wifi/status', 'attributes': { 'wifi_power': 'off' }"),
    QStringLiteral(
        "'event': 'set', 'object': 'status_public', 'attributes': { 'priority': ['eth0','wlan0','eth0.5','veth0'] }"),
    QStringLiteral("'event': 'vanish', 'interface': 'usb0'"),
    QStringLiteral("'event': 'set', 'object': 'tethering/status', 'attributes': { 'state': 'INACTIVE' }"),
};

// One a second; a mark before the first one, and after each.
constexpr int Second = 1000;

QByteArray story()
{
    QStringList timeline;
    const auto add = [&timeline](const QString &event) {
        timeline += QStringLiteral("{ 'at': %1, %2 }").arg((timeline.size() + 1) * Second).arg(event);
    };
    const auto mark = [&add](int number) {
        add(QStringLiteral("'event': 'set', 'interface': 'veth0', 'attributes': { 'mtu': %1 }").arg(number));
    };
    mark(2000);
    for (int i = 0; i < Events.size(); ++i) {
        add(Events.at(i));
        mark(2001 + i);
    }
    return QString::fromUtf8(Story).arg(timeline.join(QLatin1Char(','))).toUtf8();
}

const int LastMark = 2000 + Events.size();

/*! The number of the mark that a line makes; 0 when it makes none. */
int markOf(const QByteArray &line)
{
    static const QRegularExpression pattern(QStringLiteral("interfaces/veth0\",\"set\".*\"(2[0-9]{3})\""));
    return pattern.match(QString::fromUtf8(line)).captured(1).toInt();
}

QByteArrayList withoutTimes(const QByteArrayList &lines)
{
    QByteArrayList result;
    for (const QByteArray &line : lines.mid(1))
        result += line.mid(line.indexOf(','));
    return result;
}

/*! What happened to each object, in order. */
QMap<QByteArray, QByteArrayList> byObject(const QByteArrayList &lines)
{
    QMap<QByteArray, QByteArrayList> result;
    for (const QByteArray &line : withoutTimes(lines))
        result[line.mid(0, line.indexOf(",\"", 1))] += line;
    return result;
}

} // namespace

/*! An application cannot tell what was recorded from what happened. */
class ReplayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void recordsEverythingInOrder();
    void theApplicationHearsTheSame();
    void redactedItIsTheSameStory();
    void playedAtOnceEachObjectTellsTheSame();
    void refusesRequests();
    void refusesActs();
    void takesNoTime();
    void badRecordings_data();
    void badRecordings();

private:
    QString file(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    /*! What is seen and heard of a replay. */
    struct Replayed
    {
        QStringList notes;
        QByteArrayList lines;
        QByteArrayList redacted;
    };
    /*! Goes on when everybody has heard of the last thing. */
    void play(QByteArrayList lines, Replayed *replayed) const;
    bool startReplay(DaemonFixture *daemon, const QString &recording, const QStringList &arguments) const;
    QString write(const QByteArrayList &lines) const;

    QTemporaryDir m_folder;
    QByteArrayList m_lines;    // of the recording of the story
    QByteArrayList m_redacted; // likewise
    QStringList m_notes;       // of who has listened to it
};

bool ReplayTest::startReplay(DaemonFixture *daemon, const QString &recording, const QStringList &arguments) const
{
    return daemon->process().start(daemon->root(), QStringList {QStringLiteral("--replay"), recording} + arguments);
}

void ReplayTest::play(QByteArrayList lines, Replayed *replayed) const
{
    // A line a second, so that each can be waited for.
    int present = 0;
    for (int i = 1; i < lines.size(); ++i) {
        if (lines.at(i).contains("\"present\""))
            present = i + 1;
        else
            lines[i] =
                "{\"t\":" + QByteArray::number((i - present + 1) * Second) + lines.at(i).mid(lines.at(i).indexOf(','));
    }
    DaemonFixture daemon;
    QVERIFY(startReplay(&daemon, write(lines), {QStringLiteral("--hold")}));
    StageClient stage(daemon.root());
    RecordProcess recorder(file("again"));
    RecordProcess redacting(file("redacted"), {QStringLiteral("--redact")});
    Listener listener;
    QVERIFY(QTest::qWaitFor([&] { return listener.isReady(); }, Patience));
    QVERIFY(recorder.waitForLines(present));
    QVERIFY(redacting.waitForLines(present));
    listener.scan();
    for (int i = present; i < lines.size(); ++i) {
        QCOMPARE(stage.act("{'pass':1000}"), QStringLiteral("done"));
        QVERIFY(recorder.waitForLines(i + 1));
        QVERIFY(redacting.waitForLines(i + 1));
        if (const int number = markOf(lines.at(i)))
            QVERIFY2(listener.waitForMark(number), lines.at(i).constData());
    }
    QCOMPARE(recorder.end(SIGINT), 0);
    QCOMPARE(redacting.end(SIGTERM), 0);
    *replayed = {listener.notes, recorder.lines(), redacting.lines()};
}

QString ReplayTest::write(const QByteArrayList &lines) const
{
    QFile changed(file("changed"));
    const bool isWritten = changed.open(QIODevice::WriteOnly) && changed.write(lines.join()) >= 0;
    return isWritten ? changed.fileName() : QString();
}

void ReplayTest::initTestCase()
{
    DaemonFixture daemon;
    QVERIFY(daemon.startWith(story().constData(), {QStringLiteral("--hold")}));
    StageClient stage(daemon.root());
    RecordProcess recorder(file("story"));
    Listener listener;
    QVERIFY(QTest::qWaitFor([&] { return listener.isReady(); }, Patience));
    QVERIFY(recorder.waitFor("tethering/status"));
    listener.scan();
    QVERIFY(QTest::qWaitFor([&] { return !listener.notes.isEmpty(); }, Patience));
    QVERIFY(recorder.waitFor("scan_results"));
    // The next thing happens when everybody has heard of the last one.
    for (int number = 2000, size = recorder.lines().size(); number <= LastMark; ++size) {
        QCOMPARE(stage.act("{'pass':1000}"), QStringLiteral("done"));
        QVERIFY2(recorder.waitForLines(size + 1), recorder.lines().mid(size).join().constData());
        if (markOf(recorder.lines().constLast()) == number)
            QVERIFY2(listener.waitForMark(number++), qPrintable(QString::number(number)));
    }
    QCOMPARE(recorder.end(SIGINT), 0);
    QCOMPARE(recorder.errors(), QByteArray());
    m_lines = recorder.lines();
    m_notes = listener.notes;
}

void ReplayTest::recordsEverythingInOrder()
{
    const QByteArray all = m_lines.join();
    const auto placeOf = [this](const char *form, int from = 0) {
        const QRegularExpression pattern {QLatin1String(form)};
        for (int i = from; i < m_lines.size(); ++i) {
            if (pattern.match(QString::fromUtf8(m_lines.at(i))).hasMatch())
                return i;
        }
        return -1;
    };
    QVERIFY(placeOf("^\\{\"recording\":1,\"start\":\"20..-..-..T..:..:..\\....Z\",\"redacted\":false\\}\n$") == 0);
    QCOMPARE(placeOf("^\\{\"t\":[0-9]+,\"object\":\"/zop/services/networking/all/interfaces/"
                     "eth0\",\"present\":\\{\"connected\":\\{\"encoding\":\"text\",\"text\":\"(true|false)\"\\}"),
             1);
    QCOMPARE(all.count("\"present\""), 8); // five interfaces and what ranks them, the radio, the hotspot
    QVERIFY(!all.contains("control"));
    // Nothing is told twice, and nothing is missed: one line for each event, and one for each mark.
    int first = placeOf("interfaces/veth0\",\"set\"");
    QVERIFY(placeOf("scan_results") > 8 && placeOf("scan_results") < first);
    QCOMPARE(m_lines.size() - first, 2 * Events.size() + 1);
    // Told again, though it is what it was; and what is no text.
    const char *same = "eth0\",\"set\":\\{\"mtu\":\\{\"encoding\":\"number\",\"text\":\"1500\"\\}\\}\\}\n$";
    first = placeOf(same);
    QCOMPARE(placeOf(same, first + 1), first + 2); // a mark is between
    QCOMPARE(placeOf("eth0\",\"set\":\\{\"link_address\":\\{\"base64\":\"/wD\\+\",\"encoding\":\"text\"\\}\\}\\}\n$"),
             first + 4);
    QCOMPARE(placeOf("eth0\",\"removed\":\\[\"link_address\"\\]\\}\n$"), first + 6);
    const int gone = placeOf("usb0\",\"gone\":true\\}\n$");
    QCOMPARE(placeOf("usb0\",\"created\":", gone), gone + 4);
}

void ReplayTest::theApplicationHearsTheSame()
{
    QVERIFY2(m_notes.size() > 15, qPrintable(m_notes.join(QLatin1Char('\n'))));
    Replayed again;
    play(m_lines, &again);
    if (QTest::currentTestFailed())
        return;
    m_redacted = again.redacted;
    QCOMPARE(again.notes, m_notes);
    QCOMPARE(withoutTimes(again.lines), withoutTimes(m_lines));
}

void ReplayTest::redactedItIsTheSameStory()
{
    const QByteArray all = m_redacted.join();
    QVERIFY(all.startsWith("{\"recording\":1,") && m_redacted.constFirst().endsWith("\"redacted\":true}\n"));
    for (const char *original : {"Home", "Caf", "02:00:00", "10.20.", "172.16.", "192.168."})
        QVERIFY2(!all.contains(original), original);
    // What nobody can understand says nothing; all else is the same story.
    QCOMPARE(m_redacted.size(), m_lines.size());
    for (int i = 1; i < m_lines.size(); ++i)
        QCOMPARE(m_redacted.at(i).mid(m_redacted.at(i).indexOf(',')).left(60),
                 m_lines.at(i).mid(m_lines.at(i).indexOf(',')).left(60));
    Replayed again;
    play(m_redacted, &again);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(again.notes.size(), m_notes.size());
    QCOMPARE(again.notes.constFirst().section(QLatin1Char(' '), 0, 1), QStringLiteral("scanned 06:00:00:00:00:03"));
    for (int i = 1; i < m_notes.size(); ++i)
        QCOMPARE(again.notes.at(i).section(QLatin1Char(' '), 0, 1), m_notes.at(i).section(QLatin1Char(' '), 0, 1));
}

/*! However late who listens is: only across objects the platform knows no order. */
void ReplayTest::playedAtOnceEachObjectTellsTheSame()
{
    DaemonFixture daemon;
    QVERIFY(startReplay(&daemon, write(m_redacted), {QStringLiteral("--hold")}));
    RecordProcess recorder(file("at once"));
    QVERIFY(recorder.waitFor("tethering/status"));
    StageClient stage(daemon.root());
    QCOMPARE(stage.act("{'pass':86400000}"), QStringLiteral("done"));
    QVERIFY(recorder.waitForLines(m_redacted.size()));
    QCOMPARE(recorder.end(SIGINT), 0);
    QCOMPARE(byObject(recorder.lines()), byObject(m_redacted));
}

void ReplayTest::refusesRequests()
{
    DaemonFixture daemon;
    QVERIFY(startReplay(&daemon, file("story"), {QStringLiteral("--hold")}));
    const QVector<QPair<const char *, QByteArrayList>> requests {
        {Control, {"net_disconnected"}},
        {WifiControl, {"scan", "wifi_power", "wnet_new", "wnet_disableall"}},
        {TetheringControl, {"retrieve_profile", "update_profile", "start", "stop"}}};
    for (const auto &[path, messages] : requests) {
        ZopObject control(QLatin1String(path), ZopObject::ReadWrite, false);
        for (const QByteArray &message : messages) {
            Request request(&control, message.constData());
            QCOMPARE(request.outcome(), QStringLiteral("14 this is a recording"));
        }
    }
}

void ReplayTest::refusesActs()
{
    DaemonFixture daemon;
    QVERIFY(startReplay(&daemon, file("story"), {}));
    const auto ask = [&daemon](const QStringList &words) { return HostdProcess::run(words, daemon.root()); };
    const auto act = ask({QStringLiteral("act"), QStringLiteral("vanish"), QStringLiteral("interface=eth0")});
    QCOMPARE(act.code, 6);
    QCOMPARE(act.errors, QByteArray("morvek-hostd: a recording is played: nothing else can be\n"));
    QCOMPARE(ask({QStringLiteral("pass"), QStringLiteral("1")}).code, 6);
    const auto look = ask({QStringLiteral("look"), QStringLiteral("objects")});
    QCOMPARE(look.code, 0);
    QVERIFY(look.output.contains("eth0.5"));
    QCOMPARE(daemon.process().terminate(), 0);
    QCOMPARE(daemon.process().errors(), QByteArray()); // all of it is played
}

/*! What is at the end stays; what belongs to nobody is left out, and said once. */
void ReplayTest::takesNoTime()
{
    const QByteArrayList lines {
        "{\"recording\":1}\n", "{\"t\":0,\"object\":\"/zop/elsewhere/one\",\"present\":{}}\n",
        "{\"t\":0,\"object\":\"/zop/services/networking/all/interfaces/eth0\",\"created\":{\"mtu\":1}}\n",
        "{\"t\":86400000,\"object\":\"/zop/services/networking/all/interfaces/eth0\",\"set\":{\"mtu\":2}}\n"};
    DaemonFixture daemon;
    QVERIFY(startReplay(&daemon, write(lines), {QStringLiteral("--hold")}));
    QVERIFY(!ZopObject(QLatin1String(WifiControl), ZopObject::ReadWrite, false).isValid());
    QCOMPARE(Seen(interfacePath("eth0")).text("mtu"), QStringLiteral("1"));
    QCOMPARE(StageClient(daemon.root()).act("{'pass':86400000}"), QStringLiteral("done"));
    QCOMPARE(Seen(interfacePath("eth0")).text("mtu"), QStringLiteral("2"));
    QCOMPARE(daemon.process().terminate(), 0);
    QCOMPARE(daemon.process().errors(),
             QByteArray("morvek-hostd: not played, as they are no daemon's: 1 of the recording's objects\n"));
}

void ReplayTest::badRecordings_data()
{
    QTest::addColumn<QByteArrayList>("lines");
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("empty") << QByteArrayList() << QByteArray("line 1: this is no recording");
    QTest::newRow("cut off") << QByteArrayList {"{\"recording\":1}\n", "{\"t\":0,"} << QByteArray("line 2: is cut off");
}

void ReplayTest::badRecordings()
{
    QFETCH(QByteArrayList, lines);
    QFETCH(QByteArray, error);
    const QString name = write(lines);
    const auto ended = HostdProcess::run({QStringLiteral("--replay"), name}, file("root"));
    QCOMPARE(ended.code, 3);
    QCOMPARE(ended.errors, "morvek-hostd: " + name.toUtf8() + ": " + error + '\n');
}

QTEST_GUILESS_MAIN(ReplayTest)

#include "tst_replay.moc"
