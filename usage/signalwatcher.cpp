// SPDX-License-Identifier: Apache-2.0
#include "signalwatcher.h"

#include <QtCore/QSocketNotifier>

#include <cerrno>
#include <csignal>

#include <sys/socket.h>
#include <unistd.h>

namespace morvek {

namespace {

int ends[2] = {-1, -1};

extern "C" void tellEventLoop(int)
{
    const int saved = errno;
    const char byte = 0;
    // When the socket is full the loop has bytes enough to wake up.
    const ssize_t written = write(ends[0], &byte, 1);
    Q_UNUSED(written)
    errno = saved;
}

} // namespace

SignalWatcher::SignalWatcher(QObject *parent)
    : QObject(parent)
{
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0)
        return; // the signals then end the process as they do by themselves
    m_notifier = new QSocketNotifier(ends[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char bytes[16];
        while (read(ends[1], bytes, sizeof bytes) > 0) { }
        Q_EMIT terminationAsked();
    });
    struct sigaction action = {};
    action.sa_handler = tellEventLoop;
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

SignalWatcher::~SignalWatcher()
{
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGINT, SIG_DFL);
    delete m_notifier;
    for (int &end : ends) {
        if (end != -1)
            close(end);
        end = -1;
    }
}

} // namespace morvek
