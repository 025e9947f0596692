// SPDX-License-Identifier: Apache-2.0
#include "processes.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace morvek;

/*! What the tool says of itself, and of command lines that make no sense. No daemon is there, and none is asked. */
class TestMorvekctlUsage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nonsense_data();
    void nonsense();
    void bare();
    void asJson_data();
    void asJson();
    void emptyWords_data();
    void emptyWords();
    void version();
    void help_data();
    void help();
    void helpNamesEverything();
    void helpTellsAllInOneText();

private:
    QTemporaryDir m_root;
};

void TestMorvekctlUsage::nonsense_data()
{
    QTest::addColumn<QString>("arguments"); // separated by blanks
    QTest::addColumn<QString>("sentence");

    const auto row = [](const char *name, const char *arguments, const char *sentence) {
        QTest::newRow(name) << QString::fromUtf8(arguments) << QString::fromUtf8(sentence);
    };
    row("only an option", "--wait", "a command is missing: see 'morvekctl --help'");
    row("unknown command", "network", "there is no command \"network\": see 'morvekctl --help'");
    row("letter missing", "interface",
        "there is no command \"interface\": did you mean 'interfaces'? See 'morvekctl --help'");
    row("two letters missing", "interfac",
        "there is no command \"interfac\": did you mean 'interfaces'? See 'morvekctl --help'");
    row("three letters missing at the end", "interfa",
        "there is no command \"interfa\": did you mean 'interfaces'? See 'morvekctl --help'");
    row("a beginning of three letters", "int",
        "there is no command \"int\": did you mean 'interfaces'? See 'morvekctl --help'");
    row("a beginning of two letters", "in", "there is no command \"in\": see 'morvekctl --help'");
    row("the beginning of a command of a group", "wifi conn",
        "there is no command \"wifi conn\": did you mean 'wifi connect'? See 'morvekctl help wifi'");
    row("the beginning of an option", "hotspot set --sec WPA2",
        "there is no option \"--sec\": did you mean --security? See 'morvekctl help hotspot set'");
    row("three letters missing", "itefaes", "there is no command \"itefaes\": see 'morvekctl --help'");
    row("five letters, two slips", "shaww",
        "there is no command \"shaww\": did you mean 'show'? See 'morvekctl --help'");
    row("the beginning of another word", "wifi of",
        "there is no command \"wifi of\": did you mean 'wifi off'? See 'morvekctl help wifi'");
    row("two letters missing of a short word", "wifi sc",
        "there is no command \"wifi sc\": did you mean 'wifi scan'? See 'morvekctl help wifi'");
    row("three letters missing of a short word", "wifi s", "there is no command \"wifi s\": see 'morvekctl help wifi'");
    row("letter too much", "shoow eth0", "there is no command \"shoow\": did you mean 'show'? See 'morvekctl --help'");
    row("two letters wrong", "monotar",
        "there is no command \"monotar\": did you mean 'monitor'? See 'morvekctl --help'");
    row("letters in each other's place", "ocnfigure",
        "there is no command \"ocnfigure\": did you mean 'configure'? See 'morvekctl --help'");
    row("two pairs in each other's place", "ocnifgure",
        "there is no command \"ocnifgure\": did you mean 'configure'? See 'morvekctl --help'");
    row("three pairs in each other's place", "ocnifgrue", "there is no command \"ocnifgrue\": see 'morvekctl --help'");
    row("a slip in a short word", "wfi", "there is no command \"wfi\": did you mean 'wifi'? See 'morvekctl --help'");
    row("the closer one", "wifi offf",
        "there is no command \"wifi offf\": did you mean 'wifi off'? See 'morvekctl help wifi'");
    row("two slips in a short word", "sloe", "there is no command \"sloe\": see 'morvekctl --help'");
    row("large letters", "INTERFACES",
        "there is no command \"INTERFACES\": did you mean 'interfaces'? See 'morvekctl --help'");
    row("unknown option", "interfaces --loud", "there is no option \"--loud\": see 'morvekctl help interfaces'");
    row("slip in an option", "interfaces --jsn",
        "there is no option \"--jsn\": did you mean --json? See 'morvekctl help interfaces'");
    row("slip in an option with its value", "interfaces --timeuot=3",
        "there is no option \"--timeuot=3\": did you mean --timeout? See 'morvekctl help interfaces'");
    row("slip before the command", "--passkey-fil k wifi connect G",
        "there is no option \"--passkey-fil\": did you mean --passkey-file? See 'morvekctl --help'");
    row("slip in what another command has", "interfaces --cuont 3",
        "there is no option \"--cuont\": see 'morvekctl help interfaces'");
    row("one dash", "interfaces -json",
        "there is no option \"-json\": did you mean --json? See 'morvekctl help interfaces'");
    row("short option", "interfaces -j", "there is no option \"-j\": see 'morvekctl help interfaces'");
    row("option twice", "interfaces --wait --wait", "--wait is given twice: give it once");
    row("flag with value", "interfaces --json=yes", "--json takes no value: leave \"=\" and what follows out");
    row("option without value", "interfaces --timeout", "--timeout needs a value: --timeout SECONDS");
    row("option of another command", "interfaces --count 3",
        "'interfaces' takes no --count: see 'morvekctl help interfaces'");
    row("option before the command", "--address 1.2.3.4 monitor",
        "'monitor' takes no --address: see 'morvekctl help monitor'");
    row("word too much", "interfaces eth0", "\"eth0\" is too much: morvekctl interfaces");
    row("show what", "show", "NAME is missing: morvekctl show NAME");
    row("-h as a word", "show -- -h eth1", "\"eth1\" is too much: morvekctl show NAME");
    row("show two", "show eth0 eth1", "\"eth1\" is too much: morvekctl show NAME");
    row("help of what", "help me", "there is no command \"me\": see 'morvekctl --help'");
    row("group alone", "wifi", "a command is missing: see 'morvekctl help wifi'");
    row("group and an option", "wifi --wait", "a command is missing: see 'morvekctl help wifi'");
    row("unknown command of a group", "wifi scna",
        "there is no command \"wifi scna\": did you mean 'wifi scan'? See 'morvekctl help wifi'");
    row("command of a group alone", "connect Garage",
        "there is no command \"connect\": did you mean 'wifi connect'? See 'morvekctl --help'");
    row("command of two groups alone", "on",
        "there is no command \"on\": did you mean 'wifi on' or 'hotspot on'? See 'morvekctl --help'");
    row("group in a group", "wifi wifi", "there is no command \"wifi wifi\": see 'morvekctl help wifi'");
    row("help of an unknown command of a group", "help wifi scna",
        "there is no command \"wifi scna\": did you mean 'wifi scan'? See 'morvekctl help wifi'");
    row("help of more than a command", "help show eth0", "there is no command \"show eth0\": see 'morvekctl --help'");
    row("help of all and of one", "help --all show", "--all tells every command: leave \"show\" out");
    row("help of all twice", "help --all --all", "--all is given twice: give it once");
    row("help of too much", "help wifi scan now", "\"now\" is too much: morvekctl help [COMMAND]");
    row("word too much for a command of a group", "wifi scan all", "\"all\" is too much: morvekctl wifi scan");
    row("option of another command of the group", "wifi scan --passkey-file f",
        "'wifi scan' takes no --passkey-file: see 'morvekctl help wifi scan'");
    row("connect to what", "wifi connect", "SSID is missing: morvekctl wifi connect SSID");
    row("passkey as an argument", "wifi connect Garage sesame", "\"sesame\" is too much: morvekctl wifi connect SSID");
    row("no passkey file", "wifi connect Garage --passkey-file /nowhere/key",
        "--passkey-file \"/nowhere/key\" cannot be read: No such file or directory");
    row("folder as passkey file", "wifi connect Garage --passkey-file /",
        "--passkey-file \"/\" cannot be read: Is a directory");
    row("count of the group's monitor", "wifi monitor --count 0",
        "--count \"0\" is no number of changes: give 1 or more");
    row("group of the hotspot alone", "hotspot", "a command is missing: see 'morvekctl help hotspot'");
    row("word too much for the hotspot", "hotspot on now", "\"now\" is too much: morvekctl hotspot on");
    row("change nothing", "hotspot set", "what shall be changed? See 'morvekctl help hotspot set'");
    row("empty name", "hotspot set --name=", "--name \"\" is no name of a network: give 1 to 32 bytes of UTF-8");
    row("name too long", "hotspot set --name 123456789012345678901234567890123",
        "--name \"123456789012345678901234567890123\" is no name of a network: give 1 to 32 bytes of UTF-8");
    row("name of too many bytes", "hotspot set --name 1234567890123456789012345678901\u00e9",
        "--name \"1234567890123456789012345678901\u00e9\" is no name of a network: give 1 to 32 bytes of UTF-8");
    row("name that was no UTF-8", "hotspot set --name caf\ufffd",
        "--name \"caf\ufffd\" is no name of a network: give 1 to 32 bytes of UTF-8");
    row("unknown band", "hotspot set --band 5.0", "--band \"5.0\" is no band: use 2.4 or 5");
    row("unknown security", "hotspot set --security wpa3",
        "--security \"wpa3\" is no security: use open, WPA, WPA2 or WPA/WPA2");
    row("security that is shown only", "hotspot set --security unknown",
        "--security \"unknown\" is no security: use open, WPA, WPA2 or WPA/WPA2");
    row("no clients", "hotspot set --max-clients 0", "--max-clients \"0\" is no number of clients: give 1 or more");
    row("clients of words", "hotspot set --max-clients many",
        "--max-clients \"many\" is no number of clients: give 1 or more");
    row("negative time", "hotspot set --inactivity-time -1",
        "--inactivity-time \"-1\" is no time: give a whole number, 0 or more");
    row("time of words", "hotspot set --inactivity-time 10m",
        "--inactivity-time \"10m\" is no time: give a whole number, 0 or more");
    row("no switch", "hotspot set --privacy yes", "--privacy \"yes\" is no such value: use on or off");
    row("no switch, either",
        "hotspot set --block-connections=", "--block-connections \"\" is no such value: use on or off");
    row("value before the file", "hotspot set --passphrase-file /nowhere/key --band 3",
        "--band \"3\" is no band: use 2.4 or 5");
    row("no passphrase file", "hotspot set --passphrase-file /nowhere/key",
        "--passphrase-file \"/nowhere/key\" cannot be read: No such file or directory");
    row("passphrase twice", "hotspot set --passphrase-file /nowhere/key --ask-passphrase",
        "--ask-passphrase and --passphrase-file say the same: give only one of them");
    row("nobody to ask", "hotspot set --ask-passphrase",
        "--ask-passphrase needs a terminal: use --passphrase-file FILE, \"-\" for standard input");
    row("count of the hotspot's monitor", "hotspot monitor --count 0",
        "--count \"0\" is no number of changes: give 1 or more");
    row("steering characters", "\x1b[31mred", "there is no command \"\\u001b[31mred\": see 'morvekctl --help'");
    row("characters that turn the writing round", "a\u202Eb",
        "there is no command \"a\\u202eb\": see 'morvekctl --help'");

    row("timeout of words", "monitor --timeout soon",
        "--timeout \"soon\" is no number of seconds: give one from 0.001 to 86400");
    row("timeout of nothing", "monitor --timeout 0",
        "--timeout \"0\" is no number of seconds: give one from 0.001 to 86400");
    row("timeout below nothing", "monitor --timeout=-1",
        "--timeout \"-1\" is no number of seconds: give one from 0.001 to 86400");
    row("timeout of no number", "monitor --timeout nan",
        "--timeout \"nan\" is no number of seconds: give one from 0.001 to 86400");
    row("timeout of years", "monitor --timeout 1e9",
        "--timeout \"1e9\" is no number of seconds: give one from 0.001 to 86400");
    row("count of words", "monitor --count some", "--count \"some\" is no number of changes: give 1 or more");
    row("count of nothing", "monitor --count 0", "--count \"0\" is no number of changes: give 1 or more");

    const char usage[] = "morvekctl configure NAME auto | "
                         "morvekctl configure NAME manual --address A/N --gateway G";
    row("configure what", "configure", qPrintable(QStringLiteral("NAME is missing: ") + QLatin1String(usage)));
    row("configure how", "configure eth0",
        qPrintable(QStringLiteral("auto|manual is missing: ") + QLatin1String(usage)));
    row("no mode", "configure eth0 dhcp", "\"dhcp\" is no mode: use auto or manual");
    row("auto with an address", "configure eth0 auto --address 10.0.0.2",
        "auto takes no --address: leave it out, or use manual");
    row("auto with a prefix", "configure eth0 auto --prefix 8", "auto takes no --prefix: leave it out, or use manual");

    row("no address", "configure eth0 manual --prefix 24 --gateway 10.0.0.1",
        "the address is missing: add --address with an address like 192.168.0.1");
    row("half an address", "configure eth0 manual --address 10.0.2 --prefix 24 --gateway 10.0.0.1",
        "--address \"10.0.2\" is no IPv4 address: write it like 192.168.0.1");
    row("part too large", "configure eth0 manual --address 10.0.0.256 --prefix 24 --gateway 10.0.0.1",
        "--address \"10.0.0.256\" is no IPv4 address: write it like 192.168.0.1");
    row("octal part", "configure eth0 manual --address 10.0.0.010 --prefix 24 --gateway 10.0.0.1",
        "--address \"10.0.0.010\" is no IPv4 address: write it like 192.168.0.1");
    row("address with a dot too much", "configure eth0 manual --address 10.0.0.2. --prefix 24 --gateway 10.0.0.1",
        "--address \"10.0.0.2.\" is no IPv4 address: write it like 192.168.0.1");
    row("address with another prefix", "configure eth0 manual --address 10.0.0.2/24 --prefix 16 --gateway 10.0.0.1",
        "--address 10.0.0.2/24 and --prefix 16 contradict each other: leave --prefix 16 out, or \"/24\"");
    row("address with another netmask",
        "configure eth0 manual --address 10.0.0.2/24 --netmask 255.255.0.0 --gateway 10.0.0.1",
        "--address 10.0.0.2/24 and --netmask 255.255.0.0 contradict each other: leave --netmask 255.255.0.0 out, or "
        "\"/24\"");
    row("address with its prefix and no netmask",
        "configure eth0 manual --address 10.0.0.2/24 --netmask small --gateway 10.0.0.1",
        "--netmask \"small\" is no netmask: write it like 255.255.255.0, or use --prefix");
    row("three netmasks",
        "configure eth0 manual --address 10.0.0.2/24 --netmask 255.255.255.0 --prefix 24 --gateway 10.0.0.1",
        "--netmask and --prefix say the same: give only one of them");
    row("address with a netmask behind it", "configure eth0 manual --address 10.0.0.2/255.0.0.0 --gateway 10.0.0.1",
        "--address \"10.0.0.2/255.0.0.0\" does not fit: the prefix length is a number from 1 to 31");
    row("address with too long a prefix", "configure eth0 manual --address 10.0.0.2/32 --gateway 10.0.0.1",
        "--address \"10.0.0.2/32\" does not fit: the prefix length is a number from 1 to 31");
    row("address with too short a prefix", "configure eth0 manual --address 10.0.0.2/0 --gateway 10.0.0.1",
        "--address \"10.0.0.2/0\" does not fit: the prefix length is a number from 1 to 31");
    row("address with half a prefix", "configure eth0 manual --address 10.0.0.2/ --gateway 10.0.0.1",
        "--address \"10.0.0.2/\" does not fit: the prefix length is a number from 1 to 31");
    row("prefix of no address", "configure eth0 manual --address /24 --gateway 10.0.0.1",
        "the address is missing: add --address with an address like 192.168.0.1");
    row("gateway with a prefix", "configure eth0 manual --address 10.0.0.2/24 --gateway 10.0.0.1/24",
        "--gateway \"10.0.0.1/24\" is no IPv4 address: write it like 192.168.0.1");
    row("address of the network with its prefix", "configure eth0 manual --address 10.0.0.0/24 --gateway 10.0.0.1",
        "--address 10.0.0.0 does not fit: the first and the last address of 10.0.0.0/24 stand for the network: "
        "use another");
    row("IPv6 address", "configure eth0 manual --address fe80::1 --prefix 24 --gateway 10.0.0.1",
        "--address \"fe80::1\" is no IPv4 address: write it like 192.168.0.1");
    row("address of nobody", "configure eth0 manual --address 0.0.0.0 --prefix 24 --gateway 0.0.0.1",
        "--address 0.0.0.0 is no address of a machine in a network: use one like 192.168.0.1");
    row("loopback address", "configure eth0 manual --address 127.0.0.2 --prefix 8 --gateway 127.0.0.1",
        "--address 127.0.0.2 is no address of a machine in a network: use one like 192.168.0.1");
    row("multicast address", "configure eth0 manual --address 224.0.0.9 --prefix 24 --gateway 224.0.0.1",
        "--address 224.0.0.9 is no address of a machine in a network: use one like 192.168.0.1");
    row("address of the network", "configure eth0 manual --address 10.0.0.0 --prefix 24 --gateway 10.0.0.1",
        "--address 10.0.0.0 does not fit: the first and the last address of 10.0.0.0/24 stand for the network: "
        "use another");
    row("address for broadcasts", "configure eth0 manual --address 10.0.255.255 --prefix 16 --gateway 10.0.0.1",
        "--address 10.0.255.255 does not fit: the first and the last address of 10.0.0.0/16 stand for the network: "
        "use another");

    row("no netmask", "configure eth0 manual --address 10.0.0.2 --gateway 10.0.0.1",
        "the netmask is missing: add it to the address, like /24, or --netmask 255.255.255.0");
    row("netmask and prefix",
        "configure eth0 manual --address 10.0.0.2 --netmask 255.255.255.0 --prefix 24 --gateway 10.0.0.1",
        "--netmask and --prefix say the same: give only one of them");
    row("netmask of words", "configure eth0 manual --address 10.0.0.2 --netmask small --gateway 10.0.0.1",
        "--netmask \"small\" is no netmask: write it like 255.255.255.0, or use --prefix");
    row("netmask that is a prefix", "configure eth0 manual --address 10.0.0.2 --netmask 24 --gateway 10.0.0.1",
        "--netmask \"24\" is no netmask: write it like 255.255.255.0, or use --prefix");
    row("netmask with a hole", "configure eth0 manual --address 10.0.0.2 --netmask 255.0.255.0 --gateway 10.0.0.1",
        "--netmask \"255.0.255.0\" is no netmask: its ones must come before its zeros, like 255.255.255.0");
    row("netmask upside down", "configure eth0 manual --address 10.0.0.2 --netmask 0.0.0.255 --gateway 10.0.0.1",
        "--netmask \"0.0.0.255\" is no netmask: its ones must come before its zeros, like 255.255.255.0");
    row("empty netmask", "configure eth0 manual --address 10.0.0.2 --netmask 0.0.0.0 --gateway 10.0.0.1",
        "--netmask \"0.0.0.0\" does not fit: the prefix length is a number from 1 to 31");
    row("full netmask", "configure eth0 manual --address 10.0.0.2 --netmask 255.255.255.255 --gateway 10.0.0.1",
        "--netmask \"255.255.255.255\" does not fit: the prefix length is a number from 1 to 31");
    row("prefix with a zero before it", "configure eth0 manual --address 10.0.0.2 --prefix 024 --gateway 10.0.0.1",
        "--prefix \"024\" does not fit: the prefix length is a number from 1 to 31");
    row("address with a sign before the prefix", "configure eth0 manual --address 10.0.0.2/+24 --gateway 10.0.0.1",
        "--address \"10.0.0.2/+24\" does not fit: the prefix length is a number from 1 to 31");
    row("prefix too short", "configure eth0 manual --address 10.0.0.2 --prefix 0 --gateway 10.0.0.1",
        "--prefix \"0\" does not fit: the prefix length is a number from 1 to 31");
    row("prefix too long", "configure eth0 manual --address 10.0.0.2 --prefix 32 --gateway 10.0.0.1",
        "--prefix \"32\" does not fit: the prefix length is a number from 1 to 31");
    row("prefix below nothing", "configure eth0 manual --address 10.0.0.2 --prefix=-8 --gateway 10.0.0.1",
        "--prefix \"-8\" does not fit: the prefix length is a number from 1 to 31");

    row("no gateway", "configure eth0 manual --address 10.0.0.2 --prefix 24",
        "the gateway is missing: add --gateway with an address like 192.168.0.1");
    row("gateway of words", "configure eth0 manual --address 10.0.0.2 --prefix 24 --gateway router",
        "--gateway \"router\" is no IPv4 address: write it like 192.168.0.1");
    row("gateway outside", "configure eth0 manual --address 10.0.0.2 --prefix 24 --gateway 10.0.1.1",
        "--gateway 10.0.1.1 is outside of the network 10.0.0.0/24: use an address of that network");
    row("gateway just outside", "configure eth0 manual --address 192.168.0.2 --prefix 30 --gateway 192.168.0.4",
        "--gateway 192.168.0.4 is outside of the network 192.168.0.0/30: use an address of that network");
    row("gateway is the interface", "configure eth0 manual --address 10.0.0.2 --prefix 24 --gateway 10.0.0.2",
        "--gateway 10.0.0.2 is the interface's own address: use the router's");
    row("gateway is the network", "configure eth0 manual --address 10.0.0.2 --prefix 24 --gateway 10.0.0.0",
        "--gateway 10.0.0.0 does not fit: the first and the last address of 10.0.0.0/24 stand for the network: "
        "use another");
}

void TestMorvekctlUsage::nonsense()
{
    QFETCH(QString, arguments);
    QFETCH(QString, sentence);

    const ToolResult result = runTool(m_root.path(), arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    QCOMPARE(result.errors, QStringLiteral("morvekctl: %1\n").arg(sentence));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, 2);
}

void TestMorvekctlUsage::bare()
{
    const ToolResult result = runTool(m_root.path(), {});
    QCOMPARE(result.output,
             QStringLiteral(
                 "Usage: morvekctl COMMAND [ARGUMENT]... [OPTION]...\n"
                 "\n"
                 "Commands:\n"
                 "  status                tell which daemons are there, and what their services tell\n"
                 "  interfaces            list the network interfaces\n"
                 "  show                  tell everything that is known of one interface\n"
                 "  preferred             tell which interface the unit prefers now\n"
                 "  configure             let the interface obtain its addresses by DHCP, or give it these addresses\n"
                 "  monitor               tell each change as it comes, after the present state\n"
                 "  wifi ...              status, on, off, scan, connect, disconnect, monitor\n"
                 "  hotspot ...           status, on, off, profile, set, monitor\n"
                 "  help                  tell how morvekctl, or one command, is used\n"
                 "\n"
                 "'morvekctl --help' tells all, 'morvekctl help COMMAND' how one is used.\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 2);
}

void TestMorvekctlUsage::asJson_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("errors");
    QTest::addColumn<int>("code");

    const auto row = [](const char *name, const char *arguments, const char *errors, int code) {
        QTest::newRow(name) << QString::fromUtf8(arguments).split(QLatin1Char(' ')) << QString::fromUtf8(errors)
                            << code;
    };
    row("nothing else", "--json",
        R"({"code":null,"exitCode":2,"message":"a command is missing: see 'morvekctl --help'"})", 2);
    row("unknown command", "--json network",
        R"({"code":null,"exitCode":2,"message":"there is no command \"network\": see 'morvekctl --help'"})", 2);
    row("before the slip", "hotspot set --json",
        R"({"code":null,"exitCode":2,"message":"what shall be changed? See 'morvekctl help hotspot set'"})", 2);
    row("after the slip", "wifi scan --jsno --json",
        R"({"code":null,"exitCode":2,"message":"there is no option \"--jsno\": did you mean --json? See )"
        R"('morvekctl help wifi scan'"})",
        2);
    row("what could steer the terminal", "--json a\u202eb\x1b",
        R"({"code":null,"exitCode":2,"message":"there is no command \"a\u202eb\u001b\": see 'morvekctl --help'"})", 2);
    row("as a word", "show -- --json eth0", "morvekctl: \"eth0\" is too much: morvekctl show NAME", 2);
    row("before words", "show --json -- a b",
        R"({"code":null,"exitCode":2,"message":"\"b\" is too much: morvekctl show NAME"})", 2);
}

void TestMorvekctlUsage::asJson()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, errors);
    QFETCH(int, code);
    const ToolResult result = runTool(m_root.path(), arguments);
    QCOMPARE(result.errors, errors + QLatin1Char('\n'));
    QCOMPARE(result.output, QString());
    QCOMPARE(result.code, code);
}

void TestMorvekctlUsage::emptyWords_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("command") << QStringList {QString()} << "there is no command \"\": see 'morvekctl --help'";
    QTest::newRow("command of a group") << QStringList {QStringLiteral("wifi"), QString()}
                                        << "there is no command \"wifi \": see 'morvekctl help wifi'";
    QTest::newRow("SSID") << QStringList {QStringLiteral("wifi"), QStringLiteral("connect"), QString()}
                          << "the SSID is empty: a network is joined by its name";
}

void TestMorvekctlUsage::emptyWords()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, sentence);
    const ToolResult result = runTool(m_root.path(), arguments);
    QCOMPARE(result.errors, QStringLiteral("morvekctl: %1\n").arg(sentence));
    QCOMPARE(result.code, 2);
}

void TestMorvekctlUsage::version()
{
    const ToolResult result = runTool(m_root.path(), {QStringLiteral("--version")});
    QCOMPARE(result.output, QStringLiteral("morvekctl 1.0.0\n"));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlUsage::help_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("firstLines");

    const QString program = QStringLiteral("Usage: morvekctl COMMAND [ARGUMENT]... [OPTION]...\n\n");
    const QString show = QStringLiteral("Usage:\n  morvekctl show NAME\n");
    QTest::newRow("--help") << QStringList {QStringLiteral("--help")} << program;
    QTest::newRow("-h") << QStringList {QStringLiteral("-h")} << program;
    QTest::newRow("show -h") << QStringList {QStringLiteral("show"), QStringLiteral("-h")} << show;
    QTest::newRow("help") << QStringList {QStringLiteral("help")} << program;
    QTest::newRow("help show") << QStringList {QStringLiteral("help"), QStringLiteral("show")} << show;
    QTest::newRow("show --help") << QStringList {QStringLiteral("show"), QStringLiteral("--help")} << show;
    const QString group = QStringLiteral("Usage: morvekctl wifi COMMAND [ARGUMENT]... [OPTION]...\n\nCommands:\n"
                                         "  wifi status ");
    QTest::newRow("help wifi") << QStringList {QStringLiteral("help"), QStringLiteral("wifi")} << group;
    QTest::newRow("wifi --help") << QStringList {QStringLiteral("wifi"), QStringLiteral("--help")} << group;
    const QString scan = QStringLiteral("Usage:\n  morvekctl wifi scan\n      look for access points");
    QTest::newRow("help wifi scan") << QStringList {QStringLiteral("help"), QStringLiteral("wifi"),
                                                    QStringLiteral("scan")}
                                    << scan;
    QTest::newRow("wifi --help scan") << QStringList {QStringLiteral("wifi"), QStringLiteral("--help"),
                                                      QStringLiteral("scan")}
                                      << scan;
    QTest::newRow("--help show") << QStringList {QStringLiteral("--help"), QStringLiteral("show")} << show;
}

void TestMorvekctlUsage::help()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, firstLines);

    const ToolResult result = runTool(m_root.path(), arguments);
    QVERIFY2(result.output.startsWith(firstLines), qPrintable(result.output));
    QVERIFY(result.output.contains(QLatin1String("Examples:\n")));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlUsage::helpNamesEverything()
{
    const QString program = runTool(m_root.path(), {QStringLiteral("--help")}).output;
    const char *const parts[] = {
        "\n  status ",
        "\n  interfaces ",
        "\n  show NAME ",
        "\n  preferred ",
        "\n  configure NAME auto ",
        "\n  configure NAME manual --address A/N --gateway G\n",
        "\n  monitor ",
        "\n  wifi status ",
        "\n  wifi on ",
        "\n  wifi off ",
        "\n  wifi scan ",
        "\n  wifi connect SSID ",
        "\n  wifi disconnect ",
        "\n  wifi monitor ",
        "\n  hotspot status ",
        "\n  hotspot on ",
        "\n  hotspot off ",
        "\n  hotspot profile ",
        "\n  hotspot set OPTION...\n                        change ",
        "\n  hotspot monitor ",
        "\n  help [COMMAND] ",
        "\n  --json ",
        "\n  --wait ",
        "\n  --timeout SECONDS ",
        "\n  --verbose ",
        "\n  0                     done\n",
        "\n  1                     the operation failed",
        "\n  2                     the command line makes no sense\n",
        "\n  3                     the daemon is not there\n",
        "\n  4                     the time is up: that of --timeout, or the command's own\n",
        "\n  5                     there is no interface or network of that name\n",
        "\n  ZOP_ROOT ",
    };
    for (const char *part : parts)
        QVERIFY2(program.contains(QLatin1String(part)), part);

    const QString monitor = runTool(m_root.path(), {QStringLiteral("help"), QStringLiteral("monitor")}).output;
    QVERIFY(monitor.contains(QLatin1String("\n  --count N ")));
    const QString configure = runTool(m_root.path(), {QStringLiteral("help"), QStringLiteral("configure")}).output;
    for (const char *option :
         {"--address A/N ", "--netmask M ", "--prefix N ", "--gateway G ", "--applied ", "--dry-run "})
        QVERIFY2(configure.contains(QLatin1String("\n  ") + QLatin1String(option)), option);

    const QString group = runTool(m_root.path(), {QStringLiteral("help"), QStringLiteral("wifi")}).output;
    for (const char *command : {"status ", "on ", "off ", "scan ", "connect SSID ", "disconnect ", "monitor "})
        QVERIFY2(group.contains(QLatin1String("\n  wifi ") + QLatin1String(command)), command);
    QVERIFY(!group.contains(QLatin1String("interfaces")));
    const QString connect =
        runTool(m_root.path(), {QStringLiteral("help"), QStringLiteral("wifi"), QStringLiteral("connect")}).output;
    for (const char *option : {"--passkey-file FILE ", "--json ", "--wait ", "--timeout SECONDS "})
        QVERIFY2(connect.contains(QLatin1String("\n  ") + QLatin1String(option)), option);

    const QString hotspot = runTool(m_root.path(), {QStringLiteral("help"), QStringLiteral("hotspot")}).output;
    QVERIFY(hotspot.startsWith(QLatin1String("Usage: morvekctl hotspot COMMAND [ARGUMENT]... [OPTION]...\n")));
    QVERIFY(!hotspot.contains(QLatin1String("wifi")));
    const QString set =
        runTool(m_root.path(), {QStringLiteral("help"), QStringLiteral("hotspot"), QStringLiteral("set")}).output;
    for (const char *option :
         {"--name NAME ", "--band 2.4|5 ", "--security open|WPA|WPA2|WPA/WPA2\n", "--max-clients N ",
          "--inactivity-time N ", "--privacy on|off ", "--block-connections on|off\n", "--passphrase-file FILE\n",
          "--ask-passphrase ", "--json ", "--wait "})
        QVERIFY2(set.contains(QLatin1String("\n  ") + QLatin1String(option)), option);
    const QString shown =
        runTool(m_root.path(), {QStringLiteral("help"), QStringLiteral("hotspot"), QStringLiteral("profile")}).output;
    QVERIFY(shown.contains(QLatin1String("\n  --show-passphrase ")));
}

void TestMorvekctlUsage::helpTellsAllInOneText()
{
    const QString all = runTool(m_root.path(), {QStringLiteral("help"), QStringLiteral("--all")}).output;
    const QString program = runTool(m_root.path(), {QStringLiteral("help")}).output;
    QVERIFY(all.startsWith(program));
    for (const char *name : {"interfaces", "configure", "wifi connect", "hotspot set", "help"}) {
        const QStringList words =
            QStringList {QStringLiteral("help")} + QString::fromLatin1(name).split(QLatin1Char(' '));
        const QString command = runTool(m_root.path(), words).output;
        QVERIFY2(all.contains(QStringLiteral("\nmorvekctl %1:\n\n%2").arg(QLatin1String(name), command)), name);
    }
}

QTEST_GUILESS_MAIN(TestMorvekctlUsage)
#include "tst_morvekctl_usage.moc"
