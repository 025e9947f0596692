// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "daemonclient.h"
#include "hotspotservice.h"
#include "krellogger.h"
#include "networklibraryexports.h"
#include "secrecy.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const QByteArray FirstPassphrase = "drive safely 8"; // of the scenario headunit
const QString Store = QStringLiteral(".morvek-hostd-hotspot.json");

WifiHotspot profileWith(const QByteArray &passphrase)
{
    WifiHotspot profile;
    profile.setName(QStringLiteral("Passengers"));
    profile.setPassphrase(QString::fromUtf8(passphrase));
    profile.setMaxClients(4);
    profile.setInactivityTime(60);
    return profile;
}

} // namespace

/*! The hotspot's passphrase is told to who asks for it, kept in one file of its user, and leaves no other trace. */
class PassphraseSecrecyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void staysSecret();

private:
    void fetch(bool succeeds = true);
    void update(const QByteArray &passphrase, bool succeeds);
    void switchOn(bool on);
    template<typename Operation>
    void await(Operation *started, bool succeeds);
    void look();

    DaemonFixture m_daemon;
    QByteArray m_log;
    QList<QByteArray> m_secrets;
    HotSpotService *m_service = nullptr;
};

void PassphraseSecrecyTest::staysSecret()
{
    qputenv("KREL_VERBOSITY", "7"); // for the daemon
    KrelLogger::setVerbosity(7);
    KrelLogger::setSink(
        [this](KrelLogger::Level, unsigned short, const QString &text) { m_log += text.toUtf8() + '\n'; });
    const QStringList arguments {QStringLiteral("--speed"), QStringLiteral("20")};
    QVERIFY(m_daemon.start(QStringLiteral("headunit"), arguments));
    m_service = newHotSpotService();
    QTRY_VERIFY_WITH_TIMEOUT(m_service->ready(), Patience);
    m_secrets += formsOf(FirstPassphrase);
    fetch();
    switchOn(true);
    switchOn(false);
    update("are we there yet?", true);
    fetch();
    switchOn(true);
    update("seven77", false); // refused, since it is too short
    update("a \"quoted\\ one", true);
    update("zw\u00f6lf \u20ac dort", false); // refused, since it is not ASCII
    fetch();
    m_daemon.kill();
    update("while it is dead", false);
    QVERIFY(m_daemon.start(QStringLiteral("headunit"), arguments));
    fetch();

    QFile store(m_daemon.root() + QLatin1Char('/') + Store);
    QVERIFY(store.open(QIODevice::ReadOnly));
    QVERIFY(store.readAll().contains("quoted"));
    QCOMPARE(QDir(m_daemon.root()).entryList({Store + QLatin1Char('*')}, QDir::Files | QDir::Hidden),
             QStringList(Store));
    deleteHotSpotService(&m_service);
    KrelLogger::setSink(nullptr);
}

void PassphraseSecrecyTest::fetch(bool succeeds)
{
    await(m_service->configuration(), succeeds);
}

void PassphraseSecrecyTest::update(const QByteArray &passphrase, bool succeeds)
{
    m_secrets += formsOf(passphrase);
    await(m_service->setConfiguration(profileWith(passphrase)), succeeds);
}

void PassphraseSecrecyTest::switchOn(bool on)
{
    await(m_service->setEnabled(on), true);
    QTRY_COMPARE_WITH_TIMEOUT(m_service->enabled(), on, Patience);
}

template<typename Operation>
void PassphraseSecrecyTest::await(Operation *started, bool succeeds)
{
    const std::unique_ptr<Operation> operation(started);
    QSignalSpy success(started, &Operation::success);
    QSignalSpy failure(started, &Operation::failure);
    QElapsedTimer time;
    time.start();
    while (success.isEmpty() && failure.isEmpty() && !time.hasExpired(Patience)) {
        look(); // at every step of the request
        QCoreApplication::processEvents();
    }
    QVERIFY(!success.isEmpty() || !failure.isEmpty());
    QCOMPARE(!success.isEmpty(), succeeds);
    m_log += operation->error().message().toUtf8();
    look();
}

void PassphraseSecrecyTest::look()
{
    if (m_daemon.process().processId() > 0)
        m_log += m_daemon.process().errors() + m_daemon.process().output();
    // The store, and what becomes the store.
    const QFileInfoList stores =
        QDir(m_daemon.root()).entryInfoList({Store + QLatin1Char('*')}, QDir::Files | QDir::Hidden);
    for (const QFileInfo &store : stores) {
        if (QFile file(store.filePath()); file.open(QIODevice::ReadOnly)) // it may be renamed just now
            QCOMPARE(
                int(file.permissions() & ~(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser)),
                0);
    }
    const QByteArray files = filesBelow(m_daemon.root(), Store);
    const QByteArray processes = processList(m_daemon.process().processId());
    // Each place does hold what is not secret.
    QVERIFY(files.contains("ACTIVE"));
    QVERIFY(processes.contains("tst_passphrasesecrecy"));
    for (const QByteArray &form : qAsConst(m_secrets)) {
        QVERIFY2(!files.contains(form), "another file of the root holds the passphrase");
        QVERIFY2(!processes.contains(form), "the list of processes holds the passphrase");
        QVERIFY2(!m_log.contains(form), "a log holds the passphrase");
    }
}

QTEST_GUILESS_MAIN(PassphraseSecrecyTest)
#include "tst_passphrasesecrecy.moc"
