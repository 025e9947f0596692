// SPDX-License-Identifier: Apache-2.0
#include "hostdprocess.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <sys/stat.h>

/*! The program as a script sees it: arguments, lines, exit codes, signals. */
class HostdProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void badArguments_data();
    void badArguments();
    void informs();
    void checksScenarios();
    void warns();
    void alignsTheList();
    void badScenario();
    void unusableRoots();
    void createsTheRoot();
    void resolvesARelativeRoot();
    void takesTheRootFromTheEnvironment();
    void terminatesCleanly();
    void secondDaemonOnTheSameRoot();
    void aProcessForEachService();
    void lockDiesWithItsHolder();
    void tellsWhatHappens();
};

void HostdProgramTest::badArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("line");

    const auto row = [](const char *name, const QStringList &arguments, const QByteArray &line) {
        QTest::addRow("%s", name) << arguments << line;
    };
    row("option", {QStringLiteral("--nonsense")},
        "morvek-hostd: Unknown option 'nonsense'. (--help lists the options)\n");
    row("argument", {QStringLiteral("headunit")},
        "morvek-hostd: unexpected argument \"headunit\" (--help lists the options)\n");
    row("no value", {QStringLiteral("--speed")},
        "morvek-hostd: Missing value after '--speed'. (--help lists the options)\n");
    row("speed is a word", {QStringLiteral("--speed"), QStringLiteral("fast")},
        "morvek-hostd: --speed: \"fast\" is not a factor from 0.01 to 10000 (--help lists the options)\n");
    row("speed is nothing", {QStringLiteral("--speed"), QStringLiteral("0")},
        "morvek-hostd: --speed: \"0\" is not a factor from 0.01 to 10000 (--help lists the options)\n");
    row("speed is no number", {QStringLiteral("--speed"), QStringLiteral("nan")},
        "morvek-hostd: --speed: \"nan\" is not a factor from 0.01 to 10000 (--help lists the options)\n");
    row("seed is a word", {QStringLiteral("--seed"), QStringLiteral("x")},
        "morvek-hostd: --seed: \"x\" is not a whole number from 0 to 2147483647 (--help lists the options)\n");
    row("seed is too large", {QStringLiteral("--seed"), QStringLiteral("2147483648")},
        "morvek-hostd: --seed: \"2147483648\" is not a whole number from 0 to 2147483647 (--help lists the options)\n");
    row("interfaces", {QStringLiteral("--interfaces"), QStringLiteral("mine")},
        "morvek-hostd: --interfaces: \"mine\" is neither scenario nor system (--help lists the options)\n");
    row("both worlds",
        {QStringLiteral("--interfaces"), QStringLiteral("system"), QStringLiteral("--scenario"),
         QStringLiteral("headunit")},
        "morvek-hostd: --interfaces system has this machine's networks: it goes with neither --scenario nor --check "
        "(--help "
        "lists the options)\n");
    row("system, checked", {QStringLiteral("--interfaces"), QStringLiteral("system"), QStringLiteral("--check")},
        "morvek-hostd: --interfaces system has this machine's networks: it goes with neither --scenario nor --check "
        "(--help "
        "lists the options)\n");
    row("network", {QStringLiteral("--network"), QStringLiteral("mine")},
        "morvek-hostd: --network: \"mine\" is none of scenario, kernel, manager (--help lists the options)\n");
    row("network twice",
        {QStringLiteral("--network"), QStringLiteral("kernel"), QStringLiteral("--interfaces"),
         QStringLiteral("system")},
        "morvek-hostd: --interfaces is the older name of --network: give one of them (--help lists the options)\n");
    for (const char *network : {"kernel", "manager"}) {
        row(qPrintable(QLatin1String(network) + QStringLiteral(", and a scenario")),
            {QStringLiteral("--network"), QLatin1String(network), QStringLiteral("--scenario"),
             QStringLiteral("headunit")},
            QByteArray("morvek-hostd: --network ") + network
                + " has this machine's networks: it goes with neither --scenario nor --check (--help lists the "
                  "options)\n");
        row(qPrintable(QLatin1String(network) + QStringLiteral(", held")),
            {QStringLiteral("--network"), QLatin1String(network), QStringLiteral("--hold")},
            "morvek-hostd: --hold has a scenario's time stand still: it goes with --network scenario or --replay only, "
            "and not "
            "with "
            "--speed (--help lists the options)\n");
    }
    for (const char *option : {"--network", "--interfaces", "--scenario"})
        row(qPrintable(QStringLiteral("replay, and ") + QLatin1String(option)),
            {QStringLiteral("--replay"), QStringLiteral("x"), QLatin1String(option), QStringLiteral("scenario")},
            QByteArray("morvek-hostd: --replay plays what was recorded: it does not go with ") + option
                + " (--help lists the options)\n");
    row("replay, checked", {QStringLiteral("--replay"), QStringLiteral("x"), QStringLiteral("--check")},
        "morvek-hostd: --replay plays what was recorded: it does not go with --check (--help lists the options)\n");
    row("only, without the manager",
        {QStringLiteral("--network"), QStringLiteral("kernel"), QStringLiteral("--only"), QStringLiteral("eth0")},
        "morvek-hostd: --only goes with --network manager only (--help lists the options)\n");
    row("forced, without the manager", {QStringLiteral("--force")},
        "morvek-hostd: --force goes with --network manager only (--help lists the options)\n");
    row("remembered, without the manager", {QStringLiteral("--remember")},
        "morvek-hostd: --remember goes with --network manager only (--help lists the options)\n");
    row("only one twice",
        {QStringLiteral("--network"), QStringLiteral("manager"), QStringLiteral("--only"), QStringLiteral("eth0"),
         QStringLiteral("--only"), QStringLiteral("wlan0"), QStringLiteral("--only"), QStringLiteral("eth0")},
        "morvek-hostd: --only eth0 is given twice: give it once (--help lists the options)\n");
    row("daemon that there is none", {QStringLiteral("--without"), QStringLiteral("cellular")},
        "morvek-hostd: --without: \"cellular\" is none of networking, wifi, tethering (--help lists the options)\n");
    row("a value twice", {QStringLiteral("--speed"), QStringLiteral("2"), QStringLiteral("--speed=2")},
        "morvek-hostd: --speed is given twice: give it once (--help lists the options)\n");
    row("a switch twice", {QStringLiteral("--verbose"), QStringLiteral("--check"), QStringLiteral("--verbose")},
        "morvek-hostd: --verbose is given twice: give it once (--help lists the options)\n");
    row("help twice", {QStringLiteral("-h"), QStringLiteral("-h")},
        "morvek-hostd: -h is given twice: give it once (--help lists the options)\n");
    row("a daemon twice",
        {QStringLiteral("--without"), QStringLiteral("wifi"), QStringLiteral("--without"), QStringLiteral("tethering"),
         QStringLiteral("--without"), QStringLiteral("wifi")},
        "morvek-hostd: --without wifi is given twice: give it once (--help lists the options)\n");
    row("empty root", {QStringLiteral("--root"), QString()},
        "morvek-hostd: --root: needs a directory (--help lists the options)\n");
}

void HostdProgramTest::badArguments()
{
    QFETCH(QStringList, arguments);
    const QTemporaryDir folder;
    const HostdProcess::Ended ended = HostdProcess::run(arguments, folder.path());
    QTEST(ended.errors, "line");
    QCOMPARE(ended.code, 2);
    QCOMPARE(ended.output, QByteArray());
    QVERIFY(QDir(folder.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void HostdProgramTest::informs()
{
    const auto help = HostdProcess::run({QStringLiteral("--help")});
    QCOMPARE(help.code, 0);
    QCOMPARE(help.errors, QByteArray());
    for (const char *option : {"--scenario", "--list-scenarios", "--network", "--interfaces", "--only", "--force",
                               "--remember", "--without",        "--root",    "--speed",      "--seed", "--fresh",
                               "--hold",     "--timeout",        "--check",   "--verbose",    "--help", "--version",
                               "  act ",     "  look ",          "  pass ",   "  wait "})
        QVERIFY2(help.output.contains(option), option);

    QVERIFY(help.output.startsWith("Usage: morvek-hostd [OPTION]... [WORD]...\n\nPlays the daemons "));
    QVERIFY(help.output.contains("\n  4                     unusable root\n"));
    QCOMPARE(HostdProcess::run({QStringLiteral("-h")}).output, help.output);

    const auto version = HostdProcess::run({QStringLiteral("--version")});
    QCOMPARE(version.code, 0);
    QVERIFY2(QRegularExpression(QStringLiteral("\\Amorvek-hostd [0-9]+\\.[0-9]+\\.[0-9]+\n\\z"))
                 .match(QString::fromUtf8(version.output))
                 .hasMatch(),
             version.output.constData());

    const auto list = HostdProcess::run({QStringLiteral("--list-scenarios")});
    QCOMPARE(list.code, 0);
    const QList<QByteArray> lines = list.output.split('\n');
    QStringList names;
    for (const QByteArray &line : lines)
        names += QString::fromUtf8(line.left(line.indexOf("  ")));
    QCOMPARE(names,
             QStringList({QStringLiteral("come-and-go"), QStringLiteral("daemon-restart"), QStringLiteral("headunit"),
                          QStringLiteral("hotspot-daemon-restart"), QStringLiteral("hotspot-garbage"),
                          QStringLiteral("hotspot-inactivity"), QStringLiteral("hotspot-never-active"),
                          QStringLiteral("hotspot-no-reply"), QStringLiteral("hotspot-refused"),
                          QStringLiteral("no-reply"), QStringLiteral("refused"), QStringLiteral("wifi-daemon-restart"),
                          QStringLiteral("wifi-garbage"), QStringLiteral("wifi-no-reply"),
                          QStringLiteral("wifi-out-of-range"), QStringLiteral("wifi-refused"),
                          QStringLiteral("wifi-roaming"), QStringLiteral("wifi-security"), QString()}));
}

void HostdProgramTest::alignsTheList()
{
    const QByteArray list = HostdProcess::run({QStringLiteral("--list-scenarios")}).output;
    QVERIFY(list.startsWith("come-and-go             Wi-Fi loses "));
    QVERIFY(list.contains("\nhotspot-daemon-restart  The tethering "));
}

void HostdProgramTest::checksScenarios()
{
    const QTemporaryDir folder;
    const auto ended = HostdProcess::run(
        {QStringLiteral("--check"), QStringLiteral("--scenario"), QStringLiteral("refused")}, folder.path());
    QCOMPARE(ended.code, 0);
    QCOMPARE(ended.output, QByteArray("ok: refused\n"));
    QCOMPARE(ended.errors, QByteArray());
    QVERIFY(QDir(folder.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

// A warning is no mistake.
void HostdProgramTest::warns()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("odd.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"interfaces": [], "faults": [{"fault": "double"}, {"fault": "die"}, {"fault": "double"}]})");
    file.close();
    const QByteArray warning = "morvek-hostd: " + file.fileName().toUtf8() + ": warning: faults[";
    const QByteArray warnings = warning + "1]: never happens: faults[0] takes all of its requests\n" + warning
        + "2]: never happens: faults[0] takes all of its requests\n";
    const QStringList arguments {QStringLiteral("--scenario"), file.fileName()};
    const auto ended = HostdProcess::run(arguments + QStringList {QStringLiteral("--check")});
    QCOMPARE(ended.errors, warnings);
    QCOMPARE(ended.output, "ok: " + file.fileName().toUtf8() + '\n');
    QCOMPARE(ended.code, 0);

    HostdProcess hostd;
    QVERIFY2(hostd.start(folder.filePath(QStringLiteral("root")), arguments), hostd.errors().constData());
    QCOMPARE(hostd.errors(), warnings);
}

void HostdProgramTest::badScenario()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("bad.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\"interfaces\": [],\n \"timeline\": [{\"at\": 0, \"event\": \"vanish\", \"interface\": \"wlan9\"}]}");
    file.close();
    const QString root = folder.filePath(QStringLiteral("root"));
    const auto ended =
        HostdProcess::run({QStringLiteral("--root"), root, QStringLiteral("--scenario"), file.fileName()});
    QCOMPARE(ended.errors,
             QByteArray("morvek-hostd: ") + file.fileName().toUtf8()
                 + ": timeline[0].interface: no interface \"wlan9\"\n");
    QCOMPARE(ended.code, 3);
    QCOMPARE(ended.output, QByteArray());
    QVERIFY(!QFile::exists(root));
}

void HostdProgramTest::unusableRoots()
{
    const QTemporaryDir folder;
    const auto fails = [](const QString &root, const QByteArray &reason) {
        const QByteArray line = "morvek-hostd: the root \"" + root.toUtf8() + '"' + reason + '\n';
        const auto ended = HostdProcess::run({QStringLiteral("--root"), root});
        QCOMPARE(ended.errors, line);
        QCOMPARE(ended.output, QByteArray());
        QCOMPARE(ended.code, 4);
        QCOMPARE(HostdProcess::run({QStringLiteral("look"), QStringLiteral("--root"), root}).errors, line);
    };

    QFile file(folder.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    fails(file.fileName(), " is not a directory: set --root to a folder of your own");
    fails(file.fileName() + QStringLiteral("/below"), ": Not a directory: set --root to a folder of your own");
    const QString parent = folder.filePath(QStringLiteral("no/such"));
    fails(parent + QStringLiteral("/parents"),
          " cannot be made: there is no folder \"" + parent.toUtf8()
              + "\": make that folder, or set --root to another root");

    const QString open = folder.filePath(QStringLiteral("open"));
    QVERIFY(QDir().mkdir(open));
    QCOMPARE(chmod(QFile::encodeName(open).constData(), 0755), 0);
    fails(open, " is open to other users (wanted: mode 0700): close it with 'chmod 700 \"" + open.toUtf8() + "\"'");
    QVERIFY(QDir(open).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void HostdProgramTest::createsTheRoot()
{
    const QTemporaryDir folder;
    const QString root = folder.filePath(QStringLiteral("root"));
    HostdProcess hostd;
    QVERIFY2(hostd.start(root, {}), hostd.errors().constData());
    QCOMPARE(hostd.output(), "ready: " + root.toUtf8() + '\n');
    QCOMPARE(QFile::permissions(root) & 0x0077, QFile::Permissions());
}

void HostdProgramTest::resolvesARelativeRoot()
{
    const QTemporaryDir folder;
    const QString former = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    HostdProcess hostd;
    const bool started = hostd.start(QStringLiteral("a/../root"), {});
    const auto second = HostdProcess::run({QStringLiteral("--root"), QStringLiteral("./root/")});
    QVERIFY(QDir::setCurrent(former));
    QVERIFY2(started, hostd.errors().constData());
    const QByteArray root = folder.path().toUtf8() + "/root";
    QCOMPARE(hostd.output(), "ready: " + root + '\n');
    QCOMPARE(second.errors, "morvek-hostd: another morvek-hostd publishes below \"" + root + "\"\n");
}

void HostdProgramTest::takesTheRootFromTheEnvironment()
{
    const QTemporaryDir folder;
    HostdProcess holder;
    QVERIFY2(holder.start(folder.path(), {}), holder.errors().constData());
    QCOMPARE(HostdProcess::run({}, folder.path()).code, 5);
}

void HostdProgramTest::terminatesCleanly()
{
    const QTemporaryDir folder;
    HostdProcess hostd;
    QVERIFY2(hostd.start(folder.path(), {}), hostd.errors().constData());
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("zop/services/networking/control"))));
    QCOMPARE(hostd.terminate(), 0);
    QCOMPARE(hostd.errors(), QByteArray());
    QCOMPARE(hostd.output(), "ready: " + folder.path().toUtf8() + '\n');
    QVERIFY(!QFile::exists(folder.filePath(QStringLiteral("zop/services/networking/control"))));
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("zop/services/networking/all/status_public"))));
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("zop/services/networking/all/interfaces/wlan0"))));
}

void HostdProgramTest::secondDaemonOnTheSameRoot()
{
    const QTemporaryDir folder;
    HostdProcess first;
    QVERIFY2(first.start(folder.path(), {}), first.errors().constData());
    const auto second = HostdProcess::run(
        {QStringLiteral("--root"), folder.path(), QStringLiteral("--scenario"), QStringLiteral("refused")});
    QCOMPARE(second.code, 5);
    QCOMPARE(second.output, QByteArray());
    QCOMPARE(second.errors, "morvek-hostd: another morvek-hostd publishes below \"" + folder.path().toUtf8() + "\"\n");
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("zop/services/networking/control"))));
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("zop/services/networking/all/interfaces/cell0"))));
    QCOMPARE(first.terminate(), 0);
}

void HostdProgramTest::aProcessForEachService()
{
    const QTemporaryDir folder;
    const QString without = QStringLiteral("--without");
    HostdProcess networking;
    QVERIFY(networking.start(folder.path(), {without, QStringLiteral("wifi"), without, QStringLiteral("tethering")}));
    HostdProcess wifi;
    QVERIFY(wifi.start(folder.path(), {without, QStringLiteral("networking"), without, QStringLiteral("tethering")}));
    // Two of its three services are served already, or one.
    for (const char *left : {"tethering", "wifi", "networking"}) {
        const auto refused =
            HostdProcess::run({QStringLiteral("--root"), folder.path(), without, QString::fromLatin1(left)});
        QCOMPARE(refused.code, 5);
    }
    HostdProcess tethering;
    QVERIFY(tethering.start(folder.path(), {without, QStringLiteral("networking"), without, QStringLiteral("wifi")}));
    for (const char *service : {"networking", "wifi", "tethering"})
        QVERIFY(QFile::exists(folder.filePath(QStringLiteral("zop/services/%1/control").arg(QLatin1String(service)))));
    QCOMPARE(wifi.terminate(), 0);
    QVERIFY(!QFile::exists(folder.filePath(QStringLiteral("zop/services/wifi/control"))));
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("zop/services/networking/control"))));
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("zop/services/tethering/control"))));
}

void HostdProgramTest::lockDiesWithItsHolder()
{
    const QTemporaryDir folder;
    HostdProcess first;
    QVERIFY2(first.start(folder.path(), {}), first.errors().constData());
    first.kill();
    HostdProcess second;
    QVERIFY2(second.start(folder.path(), {}), second.errors().constData());
    QCOMPARE(second.terminate(), 0);
}

void HostdProgramTest::tellsWhatHappens()
{
    const QTemporaryDir folder;
    HostdProcess hostd;
    QVERIFY(hostd.start(folder.path(),
                        {QStringLiteral("--verbose"), QStringLiteral("--scenario"), QStringLiteral("come-and-go"),
                         QStringLiteral("--speed"), QStringLiteral("1000")}));
    QTRY_VERIFY(hostd.errors().contains("appear cell0\n"));
    const QRegularExpression form(QStringLiteral("\\A *[0-9]+ ms  event   ([a-z0-9 -]+)\\z"));
    QStringList events;
    for (const QByteArray &line : hostd.errors().trimmed().split('\n')) {
        const QRegularExpressionMatch match = form.match(QString::fromUtf8(line));
        QVERIFY2(match.hasMatch(), line.constData());
        events += match.captured(1);
    }
    QCOMPARE(events,
             QStringList({QStringLiteral("link-lost wlan0"), QStringLiteral("appear usb0"),
                          QStringLiteral("link-regained wlan0"), QStringLiteral("vanish cell0"),
                          QStringLiteral("vanish usb0"), QStringLiteral("appear cell0")}));
}

QTEST_GUILESS_MAIN(HostdProgramTest)
#include "tst_hostdprogram.moc"
