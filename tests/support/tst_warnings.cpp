// SPDX-License-Identifier: Apache-2.0
#include <QtTest/QtTest>

class TestWarnings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fails();
};

void TestWarnings::fails()
{
    QVERIFY(!QObject::connect(this, &QObject::destroyed, static_cast<QObject *>(nullptr), &QObject::deleteLater));
}

QTEST_APPLESS_MAIN(TestWarnings)
#include "tst_warnings.moc"
