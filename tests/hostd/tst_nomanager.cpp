// SPDX-License-Identifier: Apache-2.0
#include "managedmachine.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! What morvek-hostd has in the place of a network manager where it is built without libnm. */
class NoManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saysThatThereIsNone();
};

void NoManagerTest::saysThatThereIsNone()
{
    ManagedMachine machine({}, nullptr, nullptr, nullptr);
    QString error;
    QVERIFY(!machine.start(QString(), {}, &error));
    QCOMPARE(error, QStringLiteral("--network manager is not part of this build, which was made without libnm"));
    bool isBack = false;
    machine.giveBack([&isBack] { isBack = true; });
    QVERIFY(isBack);
    QVERIFY(!machine.interfaces() && !machine.radio() && !machine.hotspot());
}

QTEST_GUILESS_MAIN(NoManagerTest)
#include "tst_nomanager.moc"
