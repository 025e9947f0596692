// SPDX-License-Identifier: Apache-2.0
#include "nowaiting.h"

#include <cstdarg>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

/*
 * The functions of the C library through which everything in this process waits: the program's own come first when a
 * library looks for them.
 */

namespace {

bool isWatching = false;
QByteArrayList noted;

void note(const char *name)
{
    if (isWatching)
        noted << name;
}

bool isBlocking(int fd)
{
    return (fcntl(fd, F_GETFL) & O_NONBLOCK) == 0;
}

template<typename Function>
Function original(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

NoWaiting::NoWaiting()
{
    isWatching = true;
}

NoWaiting::~NoWaiting()
{
    isWatching = false;
}

QByteArrayList NoWaiting::take()
{
    QByteArrayList taken;
    taken.swap(noted);
    return taken;
}

extern "C" {

int poll(pollfd *descriptors, nfds_t count, int timeout)
{
    if (timeout != 0)
        note("poll");
    static const auto real = original<decltype(&poll)>("poll");
    return real(descriptors, count, timeout);
}

int ppoll(pollfd *descriptors, nfds_t count, const timespec *timeout, const sigset_t *mask)
{
    if (!timeout || timeout->tv_sec != 0 || timeout->tv_nsec != 0)
        note("ppoll");
    static const auto real = original<decltype(&ppoll)>("ppoll");
    return real(descriptors, count, timeout, mask);
}

int select(int count, fd_set *readable, fd_set *writable, fd_set *exceptional, timeval *timeout)
{
    if (!timeout || timeout->tv_sec != 0 || timeout->tv_usec != 0)
        note("select");
    static const auto real = original<decltype(&select)>("select");
    return real(count, readable, writable, exceptional, timeout);
}

int nanosleep(const timespec *wanted, timespec *left)
{
    note("nanosleep");
    static const auto real = original<decltype(&nanosleep)>("nanosleep");
    return real(wanted, left);
}

int usleep(useconds_t time)
{
    note("usleep");
    static const auto real = original<decltype(&usleep)>("usleep");
    return real(time);
}

int connect(int socket, const sockaddr *address, socklen_t size)
{
    if (isWatching && isBlocking(socket))
        note("connect");
    static const auto real = original<decltype(&connect)>("connect");
    return real(socket, address, size);
}

int flock(int fd, int operation)
{
    if ((operation & LOCK_NB) == 0 && operation != LOCK_UN)
        note("flock");
    static const auto real = original<decltype(&flock)>("flock");
    return real(fd, operation);
}

int fcntl(int fd, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    if (command == F_SETLKW || command == F_OFD_SETLKW)
        note("fcntl");
    static const auto real = original<decltype(&fcntl)>("fcntl");
    return real(fd, command, argument);
}

} // extern "C"
