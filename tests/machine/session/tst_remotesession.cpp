// SPDX-License-Identifier: Apache-2.0
#include "remotesession.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

const QByteArray Connection = "SSH_CONNECTION=192.0.2.7 50022 198.51.100.2 22";

/*! A folder like the kernel's of processes. */
class Processes
{
public:
    QString path() const { return m_folder.path(); }

    void add(int pid, int parent, const QByteArray &environment) const
    {
        const QString folder = m_folder.filePath(QString::number(pid));
        QDir().mkpath(folder);
        write(folder + QStringLiteral("/environ"), environment);
        write(folder + QStringLiteral("/status"),
              "Name:\tPPid: 1\nPid:\t" + QByteArray::number(pid) + "\nPPid:\t" + QByteArray::number(parent) + "\n");
    }

private:
    static void write(const QString &name, const QByteArray &content)
    {
        QFile file(name);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("%s", qPrintable(file.errorString()));
    }

    QTemporaryDir m_folder;
};

RemoteSession::Interface interface(const char *name, const QStringList &addresses, int parent = 0, int master = 0,
                                   const QByteArray &kind = {})
{
    RemoteSession::Interface result;
    result.name = QLatin1String(name);
    for (const QString &address : addresses)
        result.addresses += QHostAddress(address);
    result.link.parentIndex = parent;
    result.link.masterIndex = master;
    result.link.kind = kind;
    return result;
}

} // namespace

/*! What carries the remote session of whoever starts the program. */
class RemoteSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsTheConnection();
    void prefersItsOwn();
    void findsNone();
    void readsTheAddress_data();
    void readsTheAddress();
    void findsCarriers_data();
    void findsCarriers();
    void findsNothingWithoutRoutes();
};

/*! As below sudo, which keeps nothing of it. */
void RemoteSessionTest::findsTheConnection()
{
    const Processes processes;
    processes.add(40, 1, QByteArray("PATH=/bin\0", 10) + Connection + QByteArray("\0", 1));
    processes.add(41, 40, QByteArray());
    processes.add(42, 41, QByteArray("X_SSH_CONNECTION=a b c d\0PATH=/bin\0", 35));
    QCOMPARE(RemoteSession::connection(42, processes.path()), QByteArray("192.0.2.7 50022 198.51.100.2 22"));
    processes.add(1, 0, "SSH_CONNECTION=192.0.2.7 50023 198.51.100.3 22"); // in a container
    processes.add(43, 1, QByteArray());
    QCOMPARE(RemoteSession::connection(43, processes.path()), QByteArray("192.0.2.7 50023 198.51.100.3 22"));
}

void RemoteSessionTest::prefersItsOwn()
{
    const Processes processes;
    processes.add(40, 1, Connection);
    processes.add(42, 40, "SSH_CONNECTION=192.0.2.7 50023 198.51.100.3 22");
    QCOMPARE(RemoteSession::connection(42, processes.path()), QByteArray("192.0.2.7 50023 198.51.100.3 22"));
}

void RemoteSessionTest::findsNone()
{
    const Processes processes;
    processes.add(1, 0, "PATH=/bin");
    processes.add(42, 1, "SSH_CONNECTION=");
    QCOMPARE(RemoteSession::connection(42, processes.path()), QByteArray());
    QCOMPARE(RemoteSession::connection(43, processes.path()), QByteArray());
}

void RemoteSessionTest::readsTheAddress_data()
{
    QTest::addColumn<QByteArray>("connection");
    QTest::addColumn<QString>("address");

    QTest::addRow("IPv4") << QByteArray("192.0.2.7 50022 198.51.100.2 22") << QStringLiteral("198.51.100.2");
    QTest::addRow("IPv6") << QByteArray("2001:db8::7 50022 2001:db8::2 22") << QStringLiteral("2001:db8::2");
    QTest::addRow("scope") << QByteArray("fe80::7%eth0 50022 fe80::2%eth0 22") << QStringLiteral("fe80::2%eth0");
    QTest::addRow("IPv4 as IPv6") << QByteArray("::ffff:192.0.2.7 50022 ::ffff:198.51.100.2 22")
                                  << QStringLiteral("198.51.100.2");
    QTest::addRow("no address") << QByteArray("UNKNOWN 65535 UNKNOWN 65535") << QString();
    QTest::addRow("cut") << QByteArray("192.0.2.7 50022") << QString();
    QTest::addRow("none") << QByteArray() << QString();
}

void RemoteSessionTest::readsTheAddress()
{
    QFETCH(QByteArray, connection);
    QTEST(RemoteSession::address(connection).toString(), "address");
}

void RemoteSessionTest::findsCarriers_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<bool>("isCertain");

    const auto row = [](const char *name, const char *address, const QStringList &names, bool isCertain = true) {
        QTest::addRow("%s", name) << QString::fromLatin1(address) << names << isCertain;
    };
    row("Ethernet", "192.0.2.2", {"eth0"});
    row("nobody's", "192.0.2.99", {"eth1", "eth0.7", "eth0"}, false);
    row("IPv6", "2001:db8::3", {"eth1"});
    row("link-local, by name", "fe80::1%eth1", {"eth1"});
    row("link-local, by index", "fe80::1%2", {"eth0"});
    row("link-local, without scope", "fe80::1", {"eth0", "eth1"});
    row("VLAN", "192.0.2.4", {"eth0.7", "eth0"});
    row("bridge", "192.0.2.5", {"br0", "eth2", "bond0.9", "bond0", "eth3", "eth4"});
    row("tunnel", "10.0.0.1", {"wg0", "eth1", "eth0.7", "eth0"});
    row("tunnel of a program", "10.0.0.2", {"tun0", "eth1", "eth0.7", "eth0"});
}

void RemoteSessionTest::findsCarriers()
{
    const QMap<int, RemoteSession::Interface> interfaces {
        {1, interface("lo", {"127.0.0.1"})},
        {2, interface("eth0", {"192.0.2.2", "fe80::1"})},
        {3, interface("eth1", {"2001:db8::3", "fe80::1"})},
        {4, interface("eth0.7", {"192.0.2.4"}, 2, 0, "vlan")},
        {5, interface("br0", {"192.0.2.5"}, 0, 0, "bridge")},
        {6, interface("eth2", {}, 0, 5)},
        {7, interface("bond0.9", {}, 8, 5, "vlan")},
        {8, interface("bond0", {}, 0, 0, "bond")},
        {9, interface("eth3", {}, 0, 8)},
        {10, interface("eth4", {}, 0, 8)},
        {11, interface("wg0", {"10.0.0.1"}, 0, 0, "wireguard")},
        {12, interface("tun0", {"10.0.0.2"}, 0, 0, "tun")},
    };
    QVector<KernelRoute> routes(4);
    routes[0].interfaceIndex = 3;
    routes[1].interfaceIndex = 4;
    routes[2].interfaceIndex = 3;
    routes[3].interfaceIndex = 99; // gone since then
    QFETCH(QString, address);
    const RemoteSession::Carriers carriers = RemoteSession::carriers(QHostAddress(address), interfaces, routes);
    QTEST(carriers.names, "names");
    QTEST(carriers.isCertain, "isCertain");
}

void RemoteSessionTest::findsNothingWithoutRoutes()
{
    const QMap<int, RemoteSession::Interface> interfaces {{2, interface("eth0", {"192.0.2.2"})}};
    const RemoteSession::Carriers carriers = RemoteSession::carriers(QHostAddress("192.0.2.99"), interfaces, {});
    QCOMPARE(carriers.names, QStringList());
    QVERIFY(!carriers.isCertain);
}

QTEST_APPLESS_MAIN(RemoteSessionTest)

#include "tst_remotesession.moc"
