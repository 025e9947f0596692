// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "listener.h"
#include "recordprocess.h"

#include <QtCore/QRegularExpression>

using namespace morvek;

namespace {

// It begins when everybody is there. The last event, and nothing else, makes an MTU of 1999.
const char Story[] = R"({
    'delays': { 'lease': 1500, 'associate': 1500, 'manual': 1500, 'release': 500 },
    'interfaces': [
        { 'name': 'eth0', 'type': 'wired', 'link_address': '02:00:00:00:10:01',
          'lease': { 'ip_addresses': ['10.20.0.40/255.255.0.0'], 'ip_gateway': ['10.20.0.1'] } },
        { 'name': 'eth0.5', 'type': 'wired', 'parent_interface': 'eth0',
          'manual': { 'ip_addresses': ['172.16.5.2/255.255.255.0'], 'ip_gateway': ['172.16.5.1'] } },
        { 'name': 'wlan0', 'type': 'wifi', 'link_address': '02:00:00:00:10:02' },
        { 'name': 'usb0', 'type': 'usb', 'present': false, 'connected': false,
          'lease': { 'ip_addresses': ['192.168.42.129/255.255.255.0'], 'ip_gateway': ['192.168.42.1'] } }
    ],
    'priority': ['wlan0', 'eth0', 'usb0', 'eth0.5'],
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
    'timeline': [
        { 'at': 15000, 'event': 'link-lost', 'interface': 'eth0' },
        { 'at': 16000, 'event': 'appear', 'interface': 'usb0' },
        { 'at': 17000, 'event': 'link-regained', 'interface': 'eth0' },
        { 'at': 18000, 'event': 'set', 'interface': 'eth0', 'attributes': { 'mtu': 1500 } },
        { 'at': 19000, 'event': 'set', 'interface': 'eth0', 'attributes': { 'mtu': 1500 } },
        { 'at': 20000, 'event': 'set', 'interface': 'eth0', 'attributes': { 'link_address': { 'base64': '/wD+' } } },
        { 'at': 21000, 'event': 'remove', 'interface': 'eth0', 'attributes': ['link_address'] },
        { 'at': 22000, 'event': 'roam', 'bssid': '02:00:00:00:20:02' },
        { 'at': 23000, 'event': 'wifi-event', 'text': 'CTRL-EVENT-NOBODY-KNOWS' },
        { 'at': 24000, 'event': 'dropped', 'reason': 6 },
        { 'at': 25000, 'event': 'vanish', 'interface': 'usb0' },
        { 'at': 26000, 'event': 'appear', 'interface': 'usb0' },
        { 'at': 27000, 'event': 'hotspot-starts' },
        { 'at': 28000, 'event': 'vanish', 'interface': 'wlan0' },
        { 'at': 29000, 'event': 'appear', 'interface': 'wlan0' },
        { 'at': 30000, 'event': 'set', 'object': 'status_public', 'attributes': { 'default_interface': 'nobody' } },
        { 'at': 31000, 'event': 'priority', 'order': ['eth0', 'usb0', 'wlan0', 'eth0.5'] },
        { 'at': 32000, 'event': 'set', 'interface': 'wlan0', 'attributes': { 'ip_addresses': 'garbage' } },
        { 'at': 33000, 'event': 'radio-off' },
        { 'at': 34000, 'event': 'hotspot-stops' },
        { 'at': 35000, 'event': 'set', 'interface': 'eth0', 'attributes': { 'mtu': 1999 } }
    ]
})";
const QByteArray LastThing("\"1999\"");

QByteArrayList withoutTimes(const QByteArrayList &lines)
{
    QByteArrayList result;
    for (const QByteArray &line : lines.mid(1))
        result += line.mid(line.indexOf(','));
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
    void theApplicationHearsTheSame_data();
    void theApplicationHearsTheSame();
    void itsRecordingIsTheSame();
    void redactedItIsTheSameStory();
    void refusesRequests();
    void refusesActs();
    void takesNoTime();
    void badRecordings_data();
    void badRecordings();

private:
    QString file(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    /*! Lets so many \a seconds pass. */
    bool pass(const DaemonFixture &daemon, int seconds) const;
    bool startReplay(DaemonFixture *daemon, const QString &recording, const QStringList &arguments) const;
    QString write(const QByteArrayList &lines) const;

    QTemporaryDir m_folder;
    QByteArrayList m_lines;    // of the recording of the story
    QByteArrayList m_redacted; // likewise
    QStringList m_notes;       // of who has listened to it
};

bool ReplayTest::pass(const DaemonFixture &daemon, int seconds) const
{
    // Whoever listens here is served meanwhile.
    ChildProcess process;
    QSignalSpy finished(&process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished));
    process.start(HostdProcess::program(),
                  {QStringLiteral("--root"), daemon.root(), QStringLiteral("pass"), QString::number(1000 * seconds)});
    return finished.wait(Patience) && process.exitCode() == 0;
}

bool ReplayTest::startReplay(DaemonFixture *daemon, const QString &recording, const QStringList &arguments) const
{
    return daemon->process().start(daemon->root(), QStringList {QStringLiteral("--replay"), recording} + arguments);
}

QString ReplayTest::write(const QByteArrayList &lines) const
{
    QFile changed(file("changed"));
    const bool isWritten = changed.open(QIODevice::WriteOnly) && changed.write(lines.join()) >= 0;
    return isWritten ? changed.fileName() : QString();
}

void ReplayTest::initTestCase()
{
    qRegisterMetaType<QProcess::ExitStatus>();
    DaemonFixture daemon;
    QVERIFY(daemon.startWith(Story, {QStringLiteral("--speed"), QStringLiteral("4")}));
    RecordProcess recorder(file("story"));
    Listener listener;
    QVERIFY(QTest::qWaitFor([&] { return listener.isReady(); }, Patience));
    QVERIFY(recorder.waitFor("tethering/status"));
    listener.scan();
    QVERIFY(QTest::qWaitFor([&] { return !listener.notes.isEmpty(); }, Patience));
    QVERIFY(recorder.waitFor(LastThing));
    QVERIFY(QTest::qWaitFor([&] { return listener.hasHeardTheEnd(); }, Patience));

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
    QCOMPARE(all.count("\"present\""), 6); // three interfaces and what ranks them, the radio, the hotspot
    QVERIFY(!all.contains("control"));
    // Told again, though it is what it was; and what is no text.
    const char *same = "eth0\",\"set\":\\{\"mtu\":\\{\"encoding\":\"number\",\"text\":\"1500\"\\}\\}\\}\n$";
    const int first = placeOf(same);
    QCOMPARE(placeOf(same, first + 1), first + 1);
    QCOMPARE(placeOf("eth0\",\"set\":\\{\"link_address\":\\{\"base64\":\"/wD\\+\",\"encoding\":\"text\"\\}\\}\\}\n$"),
             first + 2);
    QCOMPARE(placeOf("eth0\",\"removed\":\\[\"link_address\"\\]\\}\n$"), first + 3);
    const int gone = placeOf("usb0\",\"gone\":true\\}\n$");
    const int back = placeOf("usb0\",\"created\":", gone);
    QVERIFY(first < gone && gone < back);
    QVERIFY(placeOf("scan_results") > 6 && placeOf("scan_results") < placeOf("usb0\",\"created\":"));
}

void ReplayTest::theApplicationHearsTheSame_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("held") << QStringList {QStringLiteral("--hold")};
    QTest::newRow("in time") << QStringList();
    QTest::newRow("fast") << QStringList {QStringLiteral("--speed"), QStringLiteral("20")};
}

void ReplayTest::theApplicationHearsTheSame()
{
    QFETCH(QStringList, arguments);
    QVERIFY(m_notes.size() > 30);
    // The application has to be there before anything happens.
    const int head = arguments.isEmpty() ? 2000 : 40000;
    QByteArrayList lines = m_lines;
    for (QByteArray &line : lines) {
        const int comma = line.indexOf(',');
        const QByteArray time = line.left(comma).mid(5);
        if (line.startsWith("{\"t\":") && !line.contains("\"present\""))
            line = "{\"t\":" + QByteArray::number(time.toInt() + head) + line.mid(comma);
    }
    DaemonFixture daemon;
    QVERIFY(startReplay(&daemon, write(lines), arguments));
    Listener listener;
    QVERIFY(QTest::qWaitFor([&] { return listener.isReady(); }, Patience));
    listener.scan();
    if (arguments.contains(QStringLiteral("--hold")))
        QVERIFY(pass(daemon, 3600));
    QVERIFY(QTest::qWaitFor([&] { return listener.hasHeardTheEnd(); }, Patience));
    for (int i = 0; i < qMin(m_notes.size(), listener.notes.size()); ++i)
        QCOMPARE(listener.notes.at(i), m_notes.at(i));
    QCOMPARE(listener.notes.size(), m_notes.size());
}

void ReplayTest::itsRecordingIsTheSame()
{
    DaemonFixture daemon;
    QVERIFY(startReplay(&daemon, file("story"), {QStringLiteral("--hold")}));
    RecordProcess recorder(file("again"));
    RecordProcess redacting(file("redacted"), {QStringLiteral("--redact")});
    QVERIFY(recorder.waitFor("tethering/status"));
    QVERIFY(redacting.waitFor("tethering/status"));
    QVERIFY(pass(daemon, 3600));
    QVERIFY(recorder.waitFor(LastThing));
    QVERIFY(redacting.waitFor(LastThing));
    QCOMPARE(recorder.end(SIGINT), 0);
    QCOMPARE(redacting.end(SIGTERM), 0);
    m_redacted = redacting.lines();
    const QByteArrayList lines = withoutTimes(recorder.lines());
    const QByteArrayList expected = withoutTimes(m_lines);
    for (int i = 0; i < qMin(lines.size(), expected.size()); ++i)
        QCOMPARE(lines.at(i), expected.at(i));
    QCOMPARE(lines.size(), expected.size());
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
    DaemonFixture daemon;
    QVERIFY(startReplay(&daemon, file("redacted"), {QStringLiteral("--hold")}));
    Listener listener;
    QVERIFY(QTest::qWaitFor([&] { return listener.isReady(); }, Patience));
    listener.scan();
    QVERIFY(pass(daemon, 3600));
    QVERIFY(QTest::qWaitFor([&] { return listener.hasHeardTheEnd(); }, Patience));
    QCOMPARE(listener.notes.size(), m_notes.size());
    QCOMPARE(listener.notes.constFirst().section(QLatin1Char(' '), 0, 1), QStringLiteral("scanned 06:00:00:00:00:03"));
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
    QVERIFY(pass(daemon, 86400));
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
