// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTS_CONTRACTTEST_H
#define MORVEK_TESTS_CONTRACTTEST_H

#include "changetext.h"
#include "events.h"

#include <QtCore/QCoreApplication>
#include <QtTest/QtTest>

#include <functional>

/*! A directory of this test function's own, with a slash at its end. */
QString testFolder();
/*! An object of that directory. */
QString testPath(const char *name);

/*! Turns the event loop until \a condition holds; false when that takes too long. */
bool waitUntil(const std::function<bool()> &condition);

/*! Publishes a state object that holds what \a text says, and leaves it to itself. */
bool publish(const QString &path, const QString &text);
/*! Writes the update that \a text stands for. */
bool set(morvek::ZopObject &object, const QString &text);
/*! The same through an object of its own. */
bool set(const QString &path, const QString &text);

/*! What a daemon calls the client that has sent \a msg; \a requests are the updates that the daemon was told. */
QString peerOf(const QStringList &requests, const QString &msg);

/*! Runs the tests of \a test on a fresh root, on machines where the environment names the root. */
int runContractTest(QObject *test, int argc, char **argv);

#define CONTRACT_TEST_MAIN(TestClass)                                                                                  \
    int main(int argc, char **argv)                                                                                    \
    {                                                                                                                  \
        TestClass test;                                                                                                \
        return runContractTest(&test, argc, argv);                                                                     \
    }

#endif
