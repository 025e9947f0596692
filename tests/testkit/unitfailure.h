// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_UNITFAILURE_H
#define MORVEK_TEST_UNITFAILURE_H

#include "testunit.h"

#include <QtTest/QtTest>

// What fails says why, in a warning too.
#define VERIFY_FAILS(UNIT, CALL, WHY)                                                                                  \
    do {                                                                                                               \
        const QString reason = QString::fromUtf8(WHY);                                                                 \
        QTest::ignoreMessage(QtWarningMsg, qUtf8Printable(QStringLiteral("TestUnit: ") + reason));                     \
        QVERIFY(!(CALL));                                                                                              \
        QCOMPARE((UNIT).errorString(), reason);                                                                        \
    } while (false)

#endif
