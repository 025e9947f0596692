// SPDX-License-Identifier: Apache-2.0
#include "terminationsignals.h"

#include <QtCore/QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace morvek {

namespace {

constexpr int Signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
int ends[2] = {-1, -1};

// Only what is safe in a signal handler: the event loop wakes up by the pipe.
void onSignal(int)
{
    const int error = errno;
    const char byte = 0;
    const ssize_t ignored = ::write(ends[1], &byte, 1);
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
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        Q_EMIT received();
    });
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

} // namespace morvek
