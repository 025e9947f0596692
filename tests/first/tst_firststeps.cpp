// SPDX-License-Identifier: Apache-2.0
#include "childprocess.h"
#include "testunit.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

/*! A step at work, and what it has written. */
class Step
{
public:
    explicit Step(int number, const QStringList &arguments = {})
    {
        m_process.start(QStringLiteral(FIRST_STEPS "/first-step%1").arg(number), arguments);
    }
    ~Step()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    QStringList lines()
    {
        m_output += m_process.readAllStandardOutput();
        // Names stand in isolates.
        QString text = QString::fromUtf8(m_output);
        text.remove(QChar(0x2068)).remove(QChar(0x2069));
        return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    int code() const { return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1; }

private:
    ChildProcess m_process;
    QByteArray m_output;
};

const QVariantMap OfWifi {{QStringLiteral("daemon"), QStringLiteral("wifi")}};

} // namespace

class TestFirstSteps : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void showsAState();
    void startsWithoutADaemon();
    void listsNetworks();
    void joins_data();
    void joins();
    void triesPasskeys_data();
    void triesPasskeys();
    void triesAgainWhenTheDaemonHasDied();
    void repairs();
    void saysWhatThereIsToRepair();

private:
    std::unique_ptr<TestUnit> m_unit;
};

void TestFirstSteps::init()
{
    m_unit.reset();
    m_unit.reset(new TestUnit);
    QVERIFY2(m_unit->start(), qPrintable(m_unit->errorString()));
}

void TestFirstSteps::showsAState()
{
    Step step(1);
    QTRY_COMPARE(step.lines().value(1), QStringLiteral("Connected to “Home”."));
    QVERIFY(m_unit->act(QStringLiteral("daemon-dies"), OfWifi));
    QTRY_COMPARE(step.lines().last(), QStringLiteral("The Wi-Fi service has stopped."));
    QVERIFY(m_unit->act(QStringLiteral("daemon-back"), OfWifi));
    QTRY_COMPARE(step.lines().last(), QStringLiteral("Connected to “Home”."));
    QCOMPARE(step.lines().first(), QStringLiteral("The Wi-Fi service has not started yet."));
    QVERIFY(step.isRunning());
}

void TestFirstSteps::startsWithoutADaemon()
{
    QVERIFY(m_unit->stop());
    Step step(1);
    QTRY_COMPARE(step.lines(), QStringList(QStringLiteral("The Wi-Fi service has not started yet.")));
    QVERIFY(m_unit->restart());
    QTRY_COMPARE(step.lines().last(), QStringLiteral("Connected to “Home”."));
}

void TestFirstSteps::listsNetworks()
{
    Step step(2);
    QTRY_COMPARE(step.lines().size(), 6);
    QCOMPARE(step.lines().first(), QStringLiteral("* Home, WPA2"));
    QCOMPARE(step.lines().at(1), QStringLiteral("  Garage, WPA/WPA2 + WPS"));
    QVERIFY(step.lines().contains(QStringLiteral("  Café am Markt, open")));
    QVERIFY(step.isRunning());
}

void TestFirstSteps::joins_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("line");
    QTest::newRow("right") << QStringList {QStringLiteral("Garage"), QStringLiteral("open sesame 42")} << 0
                           << QStringLiteral("Connected to “Garage”.");
    QTest::newRow("open") << QStringList {QStringLiteral("Café am Markt")} << 0
                          << QStringLiteral("Connected to “Café am Markt”.");
    QTest::newRow("no passkey") << QStringList {QStringLiteral("Garage")} << 1
                                << QStringLiteral("“Garage” needs a passkey.");
    QTest::newRow("no name") << QStringList() << 1
                             << QStringLiteral("A network is joined by its name, and there is none.");
}

void TestFirstSteps::joins()
{
    QFETCH(QStringList, arguments);
    Step step(3, arguments);
    QTRY_VERIFY(!step.isRunning());
    QTEST(step.code(), "code");
    QTEST(step.lines().value(0), "line");
}

void TestFirstSteps::triesPasskeys_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("line");
    const QString garage = QStringLiteral("Garage");
    QTest::newRow("the second") << QStringList {garage, QStringLiteral("shut sesame 1"),
                                                QStringLiteral("open sesame 42")}
                                << 0 << QStringLiteral("Passkey 2 is right.");
    QTest::newRow("none") << QStringList {garage, QStringLiteral("shut sesame 1"), QStringLiteral("shut sesame 2")} << 1
                          << QStringLiteral("The passkey of “Garage” is wrong.");
}

void TestFirstSteps::triesPasskeys()
{
    QFETCH(QStringList, arguments);
    Step step(4, arguments);
    QTRY_VERIFY(!step.isRunning());
    QTEST(step.code(), "code");
    QTEST(step.lines().value(0), "line");
    QCOMPARE(step.lines().size(), 1);
}

void TestFirstSteps::triesAgainWhenTheDaemonHasDied()
{
    QVERIFY(m_unit->act(QStringLiteral("die"),
                        {{QStringLiteral("message"), QStringLiteral("wnet_new")}, {QStringLiteral("times"), 1}}));
    Step step(4, {QStringLiteral("Garage"), QStringLiteral("open sesame 42")});
    QTRY_COMPARE(step.lines().size(), 1);
    QVERIFY(m_unit->act(QStringLiteral("daemon-back"), OfWifi));
    QTRY_VERIFY(!step.isRunning());
    QCOMPARE(step.lines().value(1), QStringLiteral("Passkey 1 is right."));
    QCOMPARE(step.code(), 0);
}

void TestFirstSteps::repairs()
{
    QVERIFY(m_unit->stop());
    QVERIFY(m_unit->start(QStringLiteral(FIRST_SCENARIO)));
    Step step(5, {QStringLiteral("eth0")});
    QTRY_VERIFY(!step.isRunning());
    QCOMPARE(step.code(), 0);
    const QStringList lines = step.lines();
    QCOMPARE(lines.value(0), QStringLiteral("Waiting for an address."));
    QCOMPARE(lines.mid(1),
             QStringList({QStringLiteral("It has not got an address."),
                          QStringLiteral("Its settings are being changed."), QStringLiteral("Connected.")}));
}

void TestFirstSteps::saysWhatThereIsToRepair()
{
    Step step(5, {QStringLiteral("eth9")});
    QTRY_COMPARE(step.lines(), QStringList(QStringLiteral("There is no such interface.")));
}

QTEST_GUILESS_MAIN(TestFirstSteps)
#include "tst_firststeps.moc"
