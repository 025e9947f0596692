// SPDX-License-Identifier: Apache-2.0
#include "hostd.h"
#include "hostdoptions.h"
#include "scenarioreader.h"
#include "wakeups.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace morvek;

/*! The whole of the daemons in the test's own process. */
class HostdTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anIdleDaemonWakesOnceASecondAtMost();
};

void HostdTest::anIdleDaemonWakesOnceASecondAtMost()
{
    const QTemporaryDir root;
    qputenv("ZOP_ROOT", QFile::encodeName(root.path()));
    Scenario scenario;
    QString error;
    QVERIFY2(readScenario(R"({"interfaces": [{"name": "wlan0", "type": "wifi", "up": false}],
        "wifi": {"interface": "wlan0", "access_points": []}})",
                          &scenario, &error),
             qPrintable(error));
    Hostd hostd(HostdOptions(), scenario);
    QVERIFY2(hostd.start(&error) == HostdExitCode::Success, qPrintable(error));
    QElapsedTimer time;
    countWakeUps([&time](int count) {
        if (count == 1)
            time.start();
        return count == 4;
    });
    // They may come late, which makes the next one seem early; but the last one never does.
    QVERIFY2(time.elapsed() >= 1900, qPrintable(QString::number(time.elapsed())));
}

QTEST_GUILESS_MAIN(HostdTest)
#include "tst_hostd.moc"
