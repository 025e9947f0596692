// SPDX-License-Identifier: Apache-2.0
#ifndef LOCKHOLDER_H
#define LOCKHOLDER_H

#include <QtCore/QFile>
#include <QtCore/QString>

#include <csignal>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

/*! A stopped process that holds the lock of an object's writers, or of a folder; until it is killed with its owner. */
class LockHolder
{
public:
    /*! The lock of the writers is that of the first byte. */
    enum Extent { FirstByte = 1, WholeFile = 0 };

    explicit LockHolder(const QString &fileOrFolder, Extent extent = FirstByte)
    {
        const QByteArray path = QFile::encodeName(fileOrFolder);
        m_process = fork();
        if (m_process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            raise(locks(path.constData(), extent) ? SIGSTOP : SIGKILL);
            _exit(1);
        }
        int status = 0;
        m_holds = waitpid(m_process, &status, WUNTRACED) == m_process && WIFSTOPPED(status);
    }
    ~LockHolder()
    {
        if (!m_holds)
            return;
        ::kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }

    bool holds() const { return m_holds; }

private:
    Q_DISABLE_COPY(LockHolder)

    // In a child of a process that may have threads: system calls only.
    static bool locks(const char *path, Extent extent)
    {
        const int folder = open(path, O_RDONLY | O_DIRECTORY);
        if (folder != -1)
            return flock(folder, LOCK_EX | LOCK_NB) == 0;
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        lock.l_len = extent;
        return fcntl(open(path, O_RDWR), F_SETLK, &lock) == 0;
    }

    pid_t m_process;
    bool m_holds;
};

#endif
