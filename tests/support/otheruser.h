// SPDX-License-Identifier: Apache-2.0
#ifndef OTHERUSER_H
#define OTHERUSER_H

#include <QtTest/QtTest>

#include <csignal>
#include <functional>

#include <grp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

/*! A process of another user, which runs \a action and ends with what it returns. Only root can have one. */
class OtherUser
{
public:
    static constexpr uid_t Id = 65534;

    explicit OtherUser(const std::function<int()> &action)
        : m_process(fork())
    {
        if (m_process != 0)
            return;
        const bool changed =
            setgroups(0, nullptr) == 0 && setgid(Id) == 0 && setuid(Id) == 0 && prctl(PR_SET_PDEATHSIG, SIGKILL) == 0;
        _exit(changed ? action() : 126);
    }
    ~OtherUser()
    {
        if (m_process <= 0)
            return;
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }

    /*! Turns the event loop until it has ended; -1 when that takes too long. */
    int result()
    {
        constexpr int Longest = 20000;
        int status = -1;
        if (!QTest::qWaitFor([this, &status] { return waitpid(m_process, &status, WNOHANG) == m_process; }, Longest))
            return -1;
        m_process = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    Q_DISABLE_COPY(OtherUser)
    pid_t m_process;
};

#endif
