// SPDX-License-Identifier: Apache-2.0
#include "kernelbell.h"

#include <QtCore/QSocketNotifier>
#include <QtCore/QString>

#include <cerrno>
#include <cstring>

#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

namespace morvek {

namespace {

// Bounded, so that a flood of notifications leaves the event loop its turns.
constexpr int MostPerTurn = 256;

} // namespace

KernelBell::KernelBell(QObject *parent)
    : QObject(parent)
{
}

KernelBell::~KernelBell()
{
    if (m_socket != -1)
        close(m_socket);
}

bool KernelBell::hang(QString *error)
{
    sockaddr_nl address = {};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_IFADDR | RTMGRP_IPV6_ROUTE;
    m_socket = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
    if (m_socket == -1 || bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        *error = QStringLiteral("the kernel does not tell changes of network interfaces: %1")
                     .arg(QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    auto *notifier = new QSocketNotifier(m_socket, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &KernelBell::drain);
    return true;
}

void KernelBell::drain()
{
    char byte;
    for (int i = 0; i < MostPerTurn; ++i) {
        // One byte of each is enough. ENOBUFS, the kernel's word for lost notifications, rings like any other.
        if (recv(m_socket, &byte, sizeof byte, MSG_TRUNC) < 0 && errno == EAGAIN)
            break;
    }
    Q_EMIT rang();
}

} // namespace morvek
