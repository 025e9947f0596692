// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_HOSTDPROCESS_H
#define MORVEK_TEST_HOSTDPROCESS_H

#include "childprocess.h"

#include <QtCore/QStringList>

/*! A run of morvek-hostd. It is killed with its owner. */
class HostdProcess
{
public:
    struct Ended
    {
        int code = -1;
        QByteArray output;
        QByteArray errors;
    };

    ~HostdProcess();

    static QString program();
    /*! Runs it to its end with \a arguments and, unless it is empty, \a root in the environment. */
    static Ended run(const QStringList &arguments, const QString &root = QString());

    /*! Starts it below \a root and waits until everything is published. */
    bool start(const QString &root, const QStringList &arguments);
    qint64 processId() const { return m_process.processId(); }
    void signal(int number) const { ::kill(pid_t(m_process.processId()), number); }
    /*! SIGTERM, and its exit code. */
    int terminate();
    /*! The exit code, when it ends by itself; -1 when it does not, or not so. */
    int waitForEnd();
    /*! SIGKILL. */
    void kill();
    QByteArray output() { return m_output += m_process.readAllStandardOutput(); }
    QByteArray errors() { return m_errors += m_process.readAllStandardError(); }

private:
    ChildProcess m_process;
    QByteArray m_output;
    QByteArray m_errors;
};

#endif
