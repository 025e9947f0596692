// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "fakemanager.h"
#include "privatebus.h"

#include <QtCore/QElapsedTimer>
#include <QtTest/QTest>

namespace {

const QStringList OverManager {QStringLiteral("--network"), QStringLiteral("manager")};

} // namespace

/*! What a manager does to the daemon that no real one does when it is asked to. */
class ManagerFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void noManager_data();
    void noManager();
    void doesNotAnswer();
    void endsWhileTheManagerDoesNotAnswer();

private:
    std::unique_ptr<PrivateBus> m_bus;
};

void ManagerFaultsTest::initTestCase()
{
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY2(m_bus->errorString().isEmpty(), qPrintable(m_bus->errorString()));
}

void ManagerFaultsTest::noManager_data()
{
    QTest::addColumn<QString>("version"); // of the manager that runs, or none
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("line");

    QTest::addRow("no bus") << QString() << QByteArray("DBUS_SYSTEM_BUS_ADDRESS")
                            << QByteArray("unix:path=/nowhere/bus")
                            << QByteArray("no system bus: Could not connect: No such file or directory");
    QTest::addRow("nobody on the bus") << QString() << QByteArray() << QByteArray()
                                       << QByteArray("no network manager runs on this machine");
    QTest::addRow("an old one")
        << QStringLiteral("1.18.10") << QByteArray() << QByteArray()
        << QByteArray("the network manager has version 1.18.10, and 1.20 is the first that can do what is asked of it");
    QTest::addRow("another event loop")
        << QStringLiteral("1.42.4") << QByteArray("QT_NO_GLIB") << QByteArray("1")
        << QByteArray("the network manager is heard in GLib's event loop only: do not set QT_NO_GLIB");
}

void ManagerFaultsTest::noManager()
{
    QFETCH(QString, version);
    QFETCH(QByteArray, variable);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, line);
    FakeManager manager(version);
    if (!version.isEmpty())
        QVERIFY(manager.start());
    const QByteArray before = qgetenv(variable);
    if (!variable.isEmpty())
        qputenv(variable, value);
    const QTemporaryDir folder;
    const auto ended = HostdProcess::run(OverManager, folder.filePath(QStringLiteral("root")));
    if (before.isEmpty())
        qunsetenv(variable);
    else
        qputenv(variable, before);
    QCOMPARE(ended.errors, QByteArray("morvek-hostd: " + line + '\n'));
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(ended.code, 1);
}

void ManagerFaultsTest::doesNotAnswer()
{
    FakeManager manager;
    manager.hold(QStringLiteral("GetManagedObjects"));
    QVERIFY(manager.start());
    const QTemporaryDir folder;
    const auto ended = HostdProcess::run(OverManager, folder.filePath(QStringLiteral("root")));
    QCOMPARE(ended.errors, QByteArray("morvek-hostd: the network manager has not answered\n"));
    QCOMPARE(ended.code, 1);
}

void ManagerFaultsTest::endsWhileTheManagerDoesNotAnswer()
{
    FakeManager manager;
    manager.hold(QStringLiteral("GetManagedObjects"));
    QVERIFY(manager.start());
    const QTemporaryDir folder;
    ChildProcess daemon;
    QElapsedTimer sinceStart;
    sinceStart.start();
    daemon.start(HostdProcess::program(),
                 OverManager + QStringList {QStringLiteral("--root"), folder.filePath(QStringLiteral("root"))});
    QTRY_COMPARE_WITH_TIMEOUT(manager.heldCalls(), 1, Patience);
    daemon.terminate();
    QVERIFY(daemon.waitForFinished(Patience));
    QVERIFY(sinceStart.elapsed() < 8000); // it would wait for 10 s
    QCOMPARE(daemon.exitCode(), 1);
    QCOMPARE(daemon.readAllStandardError(), QByteArray("morvek-hostd: the network manager has not answered\n"));
}

QTEST_GUILESS_MAIN(ManagerFaultsTest)
#include "tst_managerfaults.moc"
