// SPDX-License-Identifier: Apache-2.0
#include "managerrefusal.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! How a reply says what the manager, or the bus, or the manager's library has refused a call with. */
class ManagerRefusalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saysWhatItIs_data();
    void saysWhatItIs();
    void leavesTheBusOutOfTheText();
};

void ManagerRefusalTest::saysWhatItIs_data()
{
    QTest::addColumn<uint>("domain");
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");

    const QString gone = QStringLiteral("the network manager does not run");
    const QString own = QStringLiteral("its own text");
    QTest::addRow("unknown on the bus") << G_DBUS_ERROR << int(G_DBUS_ERROR_SERVICE_UNKNOWN) << 10 << gone;
    QTest::addRow("nobody has its name") << G_DBUS_ERROR << int(G_DBUS_ERROR_NAME_HAS_NO_OWNER) << 10 << gone;
    QTest::addRow("ended before a reply") << G_DBUS_ERROR << int(G_DBUS_ERROR_NO_REPLY) << 10 << gone;
    QTest::addRow("off the bus") << G_DBUS_ERROR << int(G_DBUS_ERROR_DISCONNECTED) << 10 << gone;
    QTest::addRow("the bus closed") << G_IO_ERROR << int(G_IO_ERROR_CLOSED) << 10 << gone;
    QTest::addRow("the library knows") << NM_CLIENT_ERROR << int(NM_CLIENT_ERROR_MANAGER_NOT_RUNNING) << 10 << gone;
    QTest::addRow("timeout") << G_DBUS_ERROR << int(G_DBUS_ERROR_TIMEOUT) << 10 << own;
    QTest::addRow("timed out") << G_DBUS_ERROR << int(G_DBUS_ERROR_TIMED_OUT) << 10 << own;
    QTest::addRow("timed out here") << G_IO_ERROR << int(G_IO_ERROR_TIMED_OUT) << 10 << own;
    QTest::addRow("the bus denies it") << G_DBUS_ERROR << int(G_DBUS_ERROR_ACCESS_DENIED) << 9 << own;
    QTest::addRow("not authenticated") << G_DBUS_ERROR << int(G_DBUS_ERROR_AUTH_FAILED) << 9 << own;
    QTest::addRow("no permission") << NM_MANAGER_ERROR << int(NM_MANAGER_ERROR_PERMISSION_DENIED) << 9 << own;
    QTest::addRow("none for profiles") << NM_SETTINGS_ERROR << int(NM_SETTINGS_ERROR_PERMISSION_DENIED) << 9 << own;
    QTest::addRow("no such device") << NM_MANAGER_ERROR << int(NM_MANAGER_ERROR_UNKNOWN_DEVICE) << 3 << own;
    QTest::addRow("bad value") << NM_CONNECTION_ERROR << int(NM_CONNECTION_ERROR_INVALID_PROPERTY) << 4 << own;
    QTest::addRow("no value") << NM_CONNECTION_ERROR << int(NM_CONNECTION_ERROR_MISSING_PROPERTY) << 4 << own;
    QTest::addRow("bad setting") << NM_CONNECTION_ERROR << int(NM_CONNECTION_ERROR_INVALID_SETTING) << 4 << own;
    QTest::addRow("no setting") << NM_CONNECTION_ERROR << int(NM_CONNECTION_ERROR_MISSING_SETTING) << 4 << own;
    QTest::addRow("something else") << NM_MANAGER_ERROR << int(NM_MANAGER_ERROR_FAILED) << 13 << own;
    // The numbers of one domain are others in the next.
    QTest::addRow("another domain") << NM_DEVICE_ERROR << int(NM_MANAGER_ERROR_PERMISSION_DENIED) << 13 << own;
}

void ManagerRefusalTest::saysWhatItIs()
{
    QFETCH(uint, domain);
    QFETCH(int, error);
    QFETCH(int, code);
    QFETCH(QString, text);
    const std::unique_ptr<GError, decltype(&g_error_free)> given(g_error_new_literal(domain, error, "its own text"),
                                                                 g_error_free);
    const Refusal refusal = refusalOf(given.get());
    QCOMPARE(int(refusal.code), code);
    QCOMPARE(refusal.text, text);
}

void ManagerRefusalTest::leavesTheBusOutOfTheText()
{
    const std::unique_ptr<GError, decltype(&g_error_free)> given(
        g_dbus_error_new_for_dbus_error("org.example.Refused", "its own text"), g_error_free);
    QCOMPARE(QByteArray(given->message), QByteArray("GDBus.Error:org.example.Refused: its own text"));
    QCOMPARE(refusalOf(given.get()).text, QStringLiteral("its own text"));
}

QTEST_GUILESS_MAIN(ManagerRefusalTest)

#include "tst_managerrefusal.moc"
