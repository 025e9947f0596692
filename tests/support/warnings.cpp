// SPDX-License-Identifier: Apache-2.0
// A test in which Qt warns fails: of a connection to nothing, a device that is not open, a timer of another thread. A
// test that provokes a warning installs a handler of its own for as long.
#include <QtTest/QtTest>

namespace {

QtMessageHandler report = nullptr;

void fail(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    report(type, context, text);
    if (type == QtWarningMsg || type == QtCriticalMsg)
        QTest::qFail(qPrintable(QStringLiteral("Qt warns: ") + text), __FILE__, __LINE__);
}

} // namespace

// The main functions of QtTest's macros find this one, as it is in the program itself. QtTest installs a handler when
// it starts, so there is no earlier moment to install another.
int QTest::qExec(QObject *test, int argc, char **argv)
{
    qInit(test, argc, argv);
    report = qInstallMessageHandler(fail);
    const int failures = qRun();
    qCleanup();
    return failures;
}
