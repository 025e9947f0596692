// SPDX-License-Identifier: Apache-2.0
#include "asyncwificonnectoperation.h"
#include "daemonclient.h"
#include "krellogger.h"
#include "networklibraryexports.h"
#include "protectedby.h"
#include "secrecy.h"
#include "wificonnectionconfig.h"
#include "wifiservice.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const QByteArray RightPasskey = "open sesame 42";
const QByteArray WrongPasskey = "tell me anyway";

} // namespace

/*! A passkey passes through the library, the platform and the daemon, and leaves no trace. */
class PasskeySecrecyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void staysSecret();

private:
    void join(const QByteArray &passkey, bool succeeds);
    void lookFor(const QByteArray &passkey);

    DaemonFixture m_daemon;
    QByteArray m_log;
    WifiService *m_service = nullptr;
};

void PasskeySecrecyTest::staysSecret()
{
    qputenv("KREL_VERBOSITY", "7"); // for the daemon
    KrelLogger::setVerbosity(7);
    KrelLogger::setSink(
        [this](KrelLogger::Level, unsigned short, const QString &text) { m_log += text.toUtf8() + '\n'; });
    QVERIFY(m_daemon.start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("20")}));
    m_service = newWifiService();
    QTRY_VERIFY_WITH_TIMEOUT(m_service->ready(), Patience);
    join(WrongPasskey, false);
    join(RightPasskey, true);
    join("seven77", false); // refused, since it is too short
    join("a \"quoted\\ one", false);
    join("zw\u00f6lf \u20ac dort", false); // refused, since it is not ASCII
    m_daemon.kill();
    join(RightPasskey, false); // nobody is there
    deleteWifiService(&m_service);
    KrelLogger::setSink(nullptr);
}

void PasskeySecrecyTest::join(const QByteArray &passkey, bool succeeds)
{
    const std::unique_ptr<AsyncWifiConnectOperation> operation(
        m_service->connectAccessPoint(protectedBy(passkey.constData(), "Garage")));
    QSignalSpy success(operation.get(), &AsyncWifiConnectOperation::success);
    QSignalSpy failure(operation.get(), &AsyncWifiConnectOperation::failure);
    QElapsedTimer time;
    time.start();
    while (success.isEmpty() && failure.isEmpty() && !time.hasExpired(Patience)) {
        lookFor(passkey); // at every step of the attempt
        QCoreApplication::processEvents();
    }
    QVERIFY(!success.isEmpty() || !failure.isEmpty());
    QCOMPARE(!success.isEmpty(), succeeds);
    lookFor(passkey);
    QVERIFY2(!operation->error().message().contains(QString::fromUtf8(passkey)),
             qPrintable(operation->error().message()));
}

void PasskeySecrecyTest::lookFor(const QByteArray &passkey)
{
    m_log += m_daemon.process().processId() > 0 ? m_daemon.process().errors() : QByteArray();
    const QByteArray files = filesBelow(m_daemon.root());
    const QByteArray processes = processList(m_daemon.process().processId());
    // Each place does hold what is not secret.
    QVERIFY(files.contains("wifi_power"));
    QVERIFY(processes.contains("tst_passkeysecrecy"));
    QVERIFY(m_log.contains("WifiProviderZop") || m_log.contains("wnet_new") || m_log.contains("ZOP object status"));
    const QList<QByteArray> forms = formsOf(passkey);
    for (const QByteArray &form : forms) {
        QVERIFY2(!files.contains(form), "a file of the root holds the passkey");
        QVERIFY2(!processes.contains(form), "the list of processes holds the passkey");
        QVERIFY2(!m_log.contains(form), "a log holds the passkey");
    }
}

QTEST_GUILESS_MAIN(PasskeySecrecyTest)
#include "tst_passkeysecrecy.moc"
