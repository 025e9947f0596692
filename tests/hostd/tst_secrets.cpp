// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

using namespace morvek;

// There when the program was built with sanitizers, which have a heap of their own.
extern "C" __attribute__((weak)) size_t __sanitizer_get_current_allocated_bytes();

namespace {

const char FromScenario[] = "drive safely 8";
const char Former[] = "former secret 4711";
const char Latter[] = "latter secret 0815";
const char Running[] = "running secret 99";

QByteArray profileWith(const char *passphrase)
{
    return QByteArray(R"({"lancfg":{"dhcp_lease_time":"60","gateway_address":"10.0.0.1","gateway_subnet":"255.0.0.0"},)"
                      R"("lanprofile":{"autoshutdown_time":0,"block_conn":true,"max_num_sta":1,"mhs_band":"2.4",)"
                      R"("passphrase":")")
        + passphrase
        + R"(","privacy":true,"security_type":"wpa_mixed","ssid":"Caravan"},)"
          R"("lantype":"wlanap","type":"lan","wantype":"bridge"})";
}

/*! How often a process has \a text in its memory, as bytes or as the code units of a text. */
int copiesIn(qint64 process, const char *text)
{
    const QByteArray bytes(text);
    const QString wide = QString::fromLatin1(bytes);
    const QByteArray units(reinterpret_cast<const char *>(wide.utf16()), 2 * wide.size());
    const QString folder = QStringLiteral("/proc/%1/").arg(process);
    QFile maps(folder + QLatin1String("maps"));
    QFile memory(folder + QLatin1String("mem"));
    if (!maps.open(QIODevice::ReadOnly) || !memory.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return -1;
    int copies = 0;
    int parts = 0;
    const QByteArrayList lines = maps.readAll().split('\n');
    for (const QByteArray &line : lines) {
        // What is written to: the heap, stacks and the data of libraries.
        static const QRegularExpression form(QStringLiteral("^([0-9a-f]+)-([0-9a-f]+) rw"));
        const QRegularExpressionMatch match = form.match(QString::fromLatin1(line));
        const qint64 begin = match.captured(1).toLongLong(nullptr, 16);
        const qint64 end = match.captured(2).toLongLong(nullptr, 16);
        if (!match.hasMatch() || !memory.seek(begin))
            continue;
        const QByteArray content = memory.read(end - begin);
        parts += content.isEmpty() ? 0 : 1;
        copies += content.count(bytes) + content.count(units);
    }
    return parts > 0 ? copies : -1;
}

} // namespace

/*! What a daemon keeps of the passphrases that it is told. */
class SecretsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_daemon = std::make_unique<DaemonFixture>(); }
    void cleanup() { m_daemon.reset(); }

    void aReplacedPassphraseLeavesNothingBehind();
    void aStoredPassphraseLeavesNothingBehind();
    void aPassphraseThatIsNotInUseAnyMoreLeavesNothingBehind();
    void aRefusedPassphraseLeavesNothingBehind();
    void aPasskeyIsKeptWithItsNetworkOnly();

private:
    bool startHeadunit() const
    {
        return m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")});
    }
    int copies(const char *text) const { return copiesIn(m_daemon->process().processId(), text); }

    std::unique_ptr<DaemonFixture> m_daemon;
};

void SecretsTest::initTestCase()
{
    if (__sanitizer_get_current_allocated_bytes)
        QTest::qSkip("a sanitizer keeps what is freed", __FILE__, __LINE__);
}

void SecretsTest::aReplacedPassphraseLeavesNothingBehind()
{
    QVERIFY(startHeadunit());
    QVERIFY(copies("morvek-hostd") > 0); // or nothing could be seen
    ZopObject control(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
    const char *const passphrases[] = {Former, Latter, Former, Latter};
    const char *previous = FromScenario;
    QTRY_COMPARE(copies(previous), 1);
    for (const char *passphrase : passphrases) {
        QCOMPARE(Request(&control, "update_profile", profileWith(passphrase).constData()).outcome(),
                 QStringLiteral("ok"));
        QVERIFY(Request(&control, "retrieve_profile", "{'type':'lan','lan_type':'wlanap'}")
                    .answer()
                    .contains(QLatin1String(passphrase)));
        // One for what is stored and in use; what has just been sent is on its way a moment longer.
        QTRY_COMPARE(copies(passphrase), 1);
        QTRY_COMPARE(copies(previous), 0);
        previous = passphrase;
    }
}

void SecretsTest::aStoredPassphraseLeavesNothingBehind()
{
    QVERIFY(startHeadunit());
    {
        ZopObject control(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
        QCOMPARE(Request(&control, "update_profile", profileWith(Former).constData()).outcome(), QStringLiteral("ok"));
        QCOMPARE(Request(&control, "start", profileWith(Running).constData()).outcome(), QStringLiteral("ok"));
        // The stored one, and the one in use.
        QTRY_COMPARE(copies(Former), 1);
        QTRY_COMPARE(copies(Running), 1);
    }
    m_daemon->kill();
    QVERIFY(startHeadunit());
    QTRY_COMPARE(copies(Former), 1);
    ZopObject control(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&control, "update_profile", profileWith(Latter).constData()).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(copies(Former), 0);
}

void SecretsTest::aPassphraseThatIsNotInUseAnyMoreLeavesNothingBehind()
{
    QVERIFY(startHeadunit());
    ZopObject control(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
    const Seen status {QLatin1String(TetheringStatus)};
    QCOMPARE(Request(&control, "start", profileWith(Running).constData()).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.text("state"), QStringLiteral("ACTIVE"));
    QTRY_COMPARE(copies(Running), 1);
    QCOMPARE(Request(&control, "stop").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.text("state"), QStringLiteral("INACTIVE"));
    QTRY_COMPARE(copies(Running), 0);
}

void SecretsTest::aRefusedPassphraseLeavesNothingBehind()
{
    QVERIFY(startHeadunit());
    ZopObject control(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
    QByteArray wrong = profileWith(Former);
    wrong.replace("wpa_mixed", "wep");
    QVERIFY(Request(&control, "update_profile", wrong.constData()).outcome() != QStringLiteral("ok"));
    QTRY_COMPARE(copies(Former), 0);
}

void SecretsTest::aPasskeyIsKeptWithItsNetworkOnly()
{
    QVERIFY(startHeadunit());
    ZopObject control(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    Request added(&control, "wnet_new", "{'ssid':'Caravan','key_mgmt':'WPA-PSK','psk':'former secret 4711'}");
    QCOMPARE(added.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(copies(Former), 1);
}

QTEST_GUILESS_MAIN(SecretsTest)

#include "tst_secrets.moc"
