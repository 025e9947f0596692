// SPDX-License-Identifier: Apache-2.0
#ifndef CHILDPROCESS_H
#define CHILDPROCESS_H

#include <QtCore/QProcess>

#include <csignal>
#include <sys/prctl.h>

/*! A process that ends with the test that started it, even when that is killed. */
class ChildProcess : public QProcess
{
protected:
    void setupChildProcess() override { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }
};

#endif
