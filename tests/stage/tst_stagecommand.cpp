// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

using namespace morvek;

/*! What a person or a script types to act on a running daemon, and to look at it. */
class StageCommandTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_daemon = std::make_unique<DaemonFixture>(); }
    void cleanup() { m_daemon.reset(); }

    void actsByWords();
    void actsByJson();
    void actsByLines();
    void looks();
    void passesTime();
    void waits();
    void nobodyIsThere();
    void doesNotAnswer();
    void documentedExample();
    void badWords_data();
    void badWords();
    void badHold_data();
    void badHold();

private:
    bool start() { return m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--hold")}); }
    /*! Runs the words, with the root in the environment. */
    HostdProcess::Ended run(const char *words) const
    {
        return HostdProcess::run(QString::fromLatin1(words).split(QLatin1Char(' ')), m_daemon->root());
    }

    std::unique_ptr<DaemonFixture> m_daemon;
};

void StageCommandTest::actsByWords()
{
    QVERIFY(start());
    auto ended = run("act link-lost interface=eth0");
    QCOMPARE(ended.errors, QByteArray());
    QCOMPARE(ended.output, QByteArray("done\n"));
    QCOMPARE(ended.code, 0);
    QCOMPARE(Seen(interfacePath("eth0")).text("up"), QStringLiteral("false"));

    ended = run("act link-lost interface=eth9");
    QCOMPARE(ended.errors, QByteArray("morvek-hostd: interface: no interface \"eth9\"\n"));
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(ended.code, 6);

    QCOMPARE(run("act refuse message=scan err=16 errmsg=busy times=1").code, 0);
    ZopObject control(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&control, "scan").outcome(), QStringLiteral("16 busy"));
    QCOMPARE(Request(&control, "scan").outcome(), QStringLiteral("ok"));
}

void StageCommandTest::actsByJson()
{
    QVERIFY(start());
    const auto act = [this](const char *json) {
        return HostdProcess::run({QStringLiteral("--root"), m_daemon->root(), QStringLiteral("act"),
                                  QString::fromLatin1(QByteArray(json).replace('\'', '"'))});
    };
    QCOMPARE(act("{'event':\n'radio-off'}").output, QByteArray("done\n"));
    QCOMPARE(Seen(QLatin1String(WifiStatus)).text("wifi_power"), QStringLiteral("off"));
    QCOMPARE(act("{'event':'radio-off'}").errors, QByteArray("morvek-hostd: the radio is off already\n"));
    QCOMPARE(act("{'event':").errors.left(20), QByteArray("morvek-hostd: line 1"));
}

void StageCommandTest::actsByLines()
{
    QVERIFY(start());
    ChildProcess process;
    process.start(HostdProcess::program(),
                  {QStringLiteral("--root"), m_daemon->root(), QStringLiteral("act"), QStringLiteral("-")});
    const auto ask = [&process](const QByteArray &line) {
        process.write(line + '\n');
        while (!process.canReadLine() && process.waitForReadyRead(Patience)) { }
        return process.readLine();
    };
    // Each is answered before the next one comes.
    QCOMPARE(ask(R"({"event":"radio-off"})"), QByteArray("{\"done\":true}\n"));
    QCOMPARE(ask(R"({"event":"radio-off"})"), QByteArray("{\"done\":false,\"reason\":\"the radio is off already\"}\n"));
    QCOMPARE(ask(R"({"look":"faults"})"), QByteArray("{\"done\":true,\"faults\":[]}\n"));
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished(Patience));
    QCOMPARE(process.exitCode(), 6);
    QCOMPARE(process.readAllStandardError(), QByteArray("morvek-hostd: not everything was done\n"));

    ChildProcess killed;
    killed.start(HostdProcess::program(),
                 {QStringLiteral("--root"), m_daemon->root(), QStringLiteral("act"), QStringLiteral("-")});
    killed.write("{\"event\":\"radio-on\"}\n");
    QVERIFY(killed.waitForReadyRead(Patience));
    m_daemon->process().kill();
    killed.write("{\"event\":\"radio-off\"}\n");
    QVERIFY(killed.waitForFinished(Patience));
    QCOMPARE(killed.exitCode(), 7);
    QCOMPARE(killed.readAllStandardError(), QByteArray("morvek-hostd: morvek-hostd has ended\n"));
}

void StageCommandTest::looks()
{
    QVERIFY(start());
    const auto keys = [this](const char *words) {
        const auto ended = run(words);
        return ended.code == 0 ? QJsonDocument::fromJson(ended.output).object().keys().join(QLatin1Char(' '))
                               : QString::fromUtf8(ended.errors);
    };
    QCOMPARE(keys("look"), QStringLiteral("daemons faults objects requests"));
    QCOMPARE(keys("look requests"), QStringLiteral("requests"));
    QCOMPARE(keys("look requests since=7"), QStringLiteral("requests"));
    QCOMPARE(keys("look since=7"), QStringLiteral("daemons faults objects requests"));
    QCOMPARE(keys("look objects"), QStringLiteral("objects"));
    QCOMPARE(run("look daemons").output,
             QByteArray("{\n    \"daemons\": {\n        \"networking\": \"alive\",\n        \"tethering\": \"alive\",\n"
                        "        \"wifi\": \"alive\"\n    }\n}\n"));
    QCOMPARE(run("look nothing").code, 6);
}

void StageCommandTest::passesTime()
{
    QVERIFY(start());
    QCOMPARE(run("act daemon-dies back_after=1000").code, 0);
    QCOMPARE(run("pass 999").output, QByteArray("done\n"));
    QCOMPARE(run("act daemon-dies").errors, QByteArray("morvek-hostd: the networking daemon is dead already\n"));
    QCOMPARE(run("pass 1").output, QByteArray("done\n"));
    QCOMPARE(run("act daemon-dies").output, QByteArray("done\n"));
    QCOMPARE(run("pass soon").errors, QByteArray("morvek-hostd: pass: must be a whole number from 0 to 86400000\n"));
}

void StageCommandTest::waits()
{
    QVERIFY(m_daemon->makeRoot());
    ChildProcess waiting;
    waiting.start(HostdProcess::program(), {QStringLiteral("--root"), m_daemon->root(), QStringLiteral("wait")});
    QVERIFY(waiting.waitForStarted(Patience));
    const auto given = run("--timeout 0.1 wait");
    QCOMPARE(given.code, 7);
    QCOMPARE(given.errors, "morvek-hostd: no morvek-hostd runs below \"" + m_daemon->root().toUtf8() + "\"\n");
    QCOMPARE(waiting.state(), QProcess::Running);
    ChildProcess hostd;
    hostd.start(HostdProcess::program(), {QStringLiteral("--root"), m_daemon->root()});
    QVERIFY(waiting.waitForFinished(Patience));
    QCOMPARE(waiting.exitCode(), 0);
    QCOMPARE(waiting.readAllStandardError(), QByteArray());
    // Everything is published by then.
    QCOMPARE(Seen(QLatin1String(TetheringStatus)).text("state"), QStringLiteral("INACTIVE"));
    QVERIFY(ZopObject(QLatin1String(TetheringControl), ZopObject::ReadWrite, false).isValid());
    hostd.kill();
    QVERIFY(hostd.waitForFinished(Patience));
}

void StageCommandTest::nobodyIsThere()
{
    const QByteArray nobody = "morvek-hostd: no morvek-hostd runs below \"" + m_daemon->root().toUtf8() + "\"\n";
    for (const bool isRootThere : {false, true}) {
        QVERIFY(!isRootThere || m_daemon->makeRoot());
        for (const char *words : {"act radio-off", "look", "pass 1", "act -", "--timeout 0 wait"}) {
            const auto ended = run(words);
            QCOMPARE(ended.errors, nobody);
            QCOMPARE(ended.output, QByteArray());
            QCOMPARE(ended.code, 7);
        }
    }
    QVERIFY(start());
    m_daemon->process().kill(); // and leaves its socket behind
    QCOMPARE(run("act radio-off").errors, nobody);
    QVERIFY(QFile::setPermissions(m_daemon->root(), QFile::Permissions(0x7755)));
    const auto refused = run("act radio-off");
    QVERIFY2(refused.errors.contains("open to other users"), refused.errors.constData());
    QVERIFY2(refused.errors.contains("chmod 700"), refused.errors.constData());
    QCOMPARE(refused.code, 7);
    // As nobody ever comes to such a root, nobody waits for it.
    const auto waited = run("--timeout 86400 wait");
    QCOMPARE(waited.errors, refused.errors);
    QCOMPARE(waited.code, 7);
}

void StageCommandTest::doesNotAnswer()
{
    QVERIFY(start());
    m_daemon->process().signal(SIGSTOP);
    const auto ended = run("--timeout 0.1 act radio-off");
    m_daemon->process().signal(SIGCONT);
    QCOMPARE(ended.errors, QByteArray("morvek-hostd: morvek-hostd does not answer\n"));
    QCOMPARE(ended.code, 7);
}

void StageCommandTest::documentedExample()
{
    QFile file(QStringLiteral(MORVEK_DOCS "/stage.md"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(file.readAll());
    const QString begin = QStringLiteral("```sh\n");
    const QString script = page.section(begin, 1, 1).section(QLatin1String("```"), 0, 0);
    QVERIFY(m_daemon->makeRoot());
    ChildProcess shell;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), m_daemon->root());
    environment.insert(QStringLiteral("PATH"),
                       QFileInfo(HostdProcess::program()).path() + QLatin1Char(':')
                           + environment.value(QStringLiteral("PATH")));
    shell.setProcessEnvironment(environment);
    shell.start(QStringLiteral("bash"),
                {QStringLiteral("-euc"), QStringLiteral("trap 'kill $(jobs -p) 2>&- || :' EXIT\n%1wait").arg(script)});
    QVERIFY(shell.waitForFinished(Patience));
    QCOMPARE(shell.readAllStandardError(), QByteArray());
    QCOMPARE(shell.exitCode(), 0);
    const QByteArray output = shell.readAllStandardOutput();
    QVERIFY2(output.startsWith("ready: " + QFile::encodeName(m_daemon->root())), output.constData());
    QCOMPARE(output.mid(output.indexOf('\n')), QByteArray("\ndone\ndone\ndone\n{\n    \"requests\": [\n    ]\n}\n"));
}

void StageCommandTest::badWords_data()
{
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<QByteArray>("error");
    const auto row = [](const char *words, const char *error) {
        QTest::addRow("%s", words) << QByteArray(words)
                                   << "morvek-hostd: " + QByteArray(error) + " (--help lists the options)\n";
    };
    row("dance", "unexpected argument \"dance\"");
    row("act", "act what?");
    row("act dance",
        "neither an event nor a fault: \"dance\" (events: vanish, appear, link-lost, link-regained, set, remove, "
        "default, default-follows, priority, daemon-dies, daemon-back, faults-end, out-of-range, in-range, signal, "
        "roam, dropped, wrong-key, radio-on, radio-off, wifi-event, hotspot-starts, hotspot-stops; faults: refuse, "
        "no-reply, "
        "late, double, die, answer, ignore)");
    row("pass", "pass what?");
    row("wait long", "unexpected argument \"long\"");
    row("act vanish eth0", "\"eth0\" is neither KEY=VALUE nor KEY:=JSON");
    row("act vanish =eth0", "\"=eth0\" is neither KEY=VALUE nor KEY:=JSON");
    row("act vanish interface=a interface=b", "a second \"interface\"");
    row("act priority order:=[", "order: \"[\" is no JSON");
    row("act priority order:=1,2", "order: \"1,2\" is no JSON");
    row("--scenario headunit act radio-off", "--scenario does not go with act");
    row("--hold look", "--hold does not go with look");
    row("--timeout soon wait", "--timeout: \"soon\" is not a time from 0 to 86400 seconds");
    row("--timeout -1 wait", "--timeout: \"-1\" is not a time from 0 to 86400 seconds");
    row("--timeout 86401 wait", "--timeout: \"86401\" is not a time from 0 to 86400 seconds");
    row("--timeout 1", "--timeout goes with act, look, pass, wait only");
}

void StageCommandTest::badWords()
{
    QFETCH(QByteArray, words);
    const auto ended = run(words.constData());
    QTEST(ended.errors, "error");
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(ended.code, 2);
}

void StageCommandTest::badHold_data()
{
    QTest::addColumn<QByteArray>("words");
    QTest::newRow("system") << QByteArray("--hold --interfaces system");
    QTest::newRow("speed") << QByteArray("--hold --speed 10");
}

void StageCommandTest::badHold()
{
    QFETCH(QByteArray, words);
    const auto ended = run(words.constData());
    QCOMPARE(ended.errors,
             QByteArray("morvek-hostd: --hold has a scenario's time stand still: it goes with --network scenario "
                        "or --replay only, and not with --speed (--help lists the options)\n"));
    QCOMPARE(ended.code, 2);
}

QTEST_GUILESS_MAIN(StageCommandTest)
#include "tst_stagecommand.moc"
