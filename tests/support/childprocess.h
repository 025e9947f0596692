// SPDX-License-Identifier: Apache-2.0
#ifndef CHILDPROCESS_H
#define CHILDPROCESS_H

#include <QtCore/QProcess>

#include <csignal>
#include <sys/prctl.h>

/*! Lets the signals that end a process do so, whatever those who started the test ignore; nohup does, for one. */
inline void restoreSignals()
{
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM})
        ::signal(signal, SIG_DFL);
}

/*! A process that ends with the test that started it, even when that is killed. */
class ChildProcess : public QProcess
{
protected:
    void setupChildProcess() override
    {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        restoreSignals();
    }
};

#endif
