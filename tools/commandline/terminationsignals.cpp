// SPDX-License-Identifier: Apache-2.0
#include "terminationsignals.h"

#include <QtCore/QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace morvek {

namespace {

constexpr int Signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
/*! In milliseconds: who stops a program may do so by its process and by its group, as timeout(1) does. */
constexpr qint64 SameOccasion = 100;
int ends[2] = {-1, -1};

// Only what is safe in a signal handler: the event loop wakes up by the pipe.
void onSignal(int)
{
    const int error = errno;
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    const ssize_t ignored = ::write(ends[1], &time, sizeof(time));
    Q_UNUSED(ignored)
    errno = error;
}

void setHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : Signals) {
        struct sigaction present = {};
        ::sigaction(signal, nullptr, &present);
        if (signal != SIGHUP || present.sa_handler != SIG_IGN)
            ::sigaction(signal, &action, nullptr);
    }
}

} // namespace

TerminationSignals::TerminationSignals()
{
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    setHandler(onSignal);
    auto notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &TerminationSignals::read);
}

TerminationSignals::~TerminationSignals()
{
    if (ends[0] < 0)
        return;
    setHandler(SIG_DFL);
    ::close(ends[0]);
    ::close(ends[1]);
    ends[0] = ends[1] = -1;
}

void TerminationSignals::read()
{
    timespec time = {};
    if (::read(ends[0], &time, sizeof(time)) != sizeof(time))
        return;
    const qint64 milliseconds = qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
    const bool isNew = m_last < 0 || milliseconds - m_last >= SameOccasion;
    if (!isNew)
        return;
    m_last = milliseconds;
    Q_EMIT received();
}

} // namespace morvek
