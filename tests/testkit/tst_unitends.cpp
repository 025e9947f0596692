// SPDX-License-Identifier: Apache-2.0
#include "childprocess.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtTest/QtTest>

namespace {

/*! A test of its own, in a group of its own. */
class ShortLived : public QProcess
{
public:
    /*! What it tells, waited for. */
    QStringList begin(const QString &way)
    {
        start(QStringLiteral(SHORT_LIVED), {way});
        while (!canReadLine()) {
            if (!waitForReadyRead(20000))
                return {};
        }
        return QString::fromUtf8(readLine()).split(QLatin1Char(' '));
    }

protected:
    void setupChildProcess() override
    {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        restoreSignals();
        ::setpgid(0, 0);
    }
};

/*! Whether \a process runs; one that nobody has asked for its end yet does not. */
bool isRunning(const QString &process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    return file.open(QIODevice::ReadOnly) && !file.readAll().contains(") Z ");
}

} // namespace

/*! What is left of a unit whose test ends in any way: nothing. */
class UnitEndsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsWithItsTest_data();
    void endsWithItsTest();
    void testsRunSideBySide();
};

void UnitEndsTest::endsWithItsTest_data()
{
    QTest::addColumn<bool>("leavesAChild");
    for (const char *way : {"abort", "exit", "killed", "dead", "stopped", "group", "interrupt", "deaf"})
        QTest::addRow("%s", way) << false;
    QTest::addRow("child") << true;
}

void UnitEndsTest::endsWithItsTest()
{
    QFETCH(bool, leavesAChild);
    ShortLived test;
    const QStringList told = test.begin(QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(told.size(), 3);
    const QFileInfo folder(QFileInfo(told.at(0)).path());
    QVERIFY2(folder.fileName().startsWith(QLatin1String("morvek-unit-")), qPrintable(told.at(0)));
    QVERIFY(test.state() == QProcess::NotRunning || test.waitForFinished(20000));
    QTRY_VERIFY_WITH_TIMEOUT(!QFileInfo::exists(folder.filePath()), 20000);
    QTRY_VERIFY(!isRunning(told.at(1)));
    const QString child = told.at(2).trimmed();
    QCOMPARE(isRunning(child), leavesAChild);
    if (leavesAChild)
        ::kill(pid_t(child.toInt()), SIGKILL);
}

void UnitEndsTest::testsRunSideBySide()
{
    ShortLived first;
    ShortLived second;
    const QStringList ofFirst = first.begin(QStringLiteral("wait"));
    const QStringList ofSecond = second.begin(QStringLiteral("wait"));
    QCOMPARE(ofFirst.size(), 3);
    QCOMPARE(ofSecond.size(), 3);
    QVERIFY(ofFirst.at(0) != ofSecond.at(0));
    QVERIFY(isRunning(ofFirst.at(1)));
    first.kill();
    QTRY_VERIFY_WITH_TIMEOUT(!QFileInfo::exists(ofFirst.at(0)), 20000);
    QVERIFY(isRunning(ofSecond.at(1)));
    QVERIFY(QFileInfo::exists(ofSecond.at(0)));
    second.kill();
    QTRY_VERIFY_WITH_TIMEOUT(!QFileInfo::exists(ofSecond.at(0)), 20000);
    QTRY_VERIFY(!isRunning(ofSecond.at(1)));
}

QTEST_GUILESS_MAIN(UnitEndsTest)
#include "tst_unitends.moc"
