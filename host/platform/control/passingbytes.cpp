// SPDX-License-Identifier: Apache-2.0
#include "passingbytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/socket.h>

namespace morvek {

void PassingBytes::append(const char *bytes, int size)
{
    reserve(size);
    std::memcpy(m_bytes.get() + m_end, bytes, size_t(size));
    m_end += size;
}

void PassingBytes::pass(int size)
{
    explicit_bzero(m_bytes.get() + m_begin, size_t(size));
    m_begin += size;
    if (m_begin == m_end)
        clear();
}

void PassingBytes::clear()
{
    if (m_bytes)
        explicit_bzero(m_bytes.get() + m_begin, size_t(size()));
    m_bytes.reset();
    m_capacity = m_begin = m_end = 0;
}

ssize_t PassingBytes::receive(int socket, int most)
{
    reserve(most);
    const ssize_t size = recv(socket, m_bytes.get() + m_end, size_t(most), 0);
    const int error = errno;
    m_end += int(std::max<ssize_t>(size, 0));
    if (this->size() == 0)
        clear();
    errno = error;
    return size;
}

ssize_t PassingBytes::transmit(int socket)
{
    const ssize_t size = send(socket, data(), size_t(this->size()), MSG_NOSIGNAL);
    if (size > 0)
        pass(int(size));
    return size;
}

/*! Makes room behind the last byte, twice as much as there is at least: each byte moves a few times only. */
void PassingBytes::reserve(int more)
{
    if (m_capacity - m_end >= more)
        return;
    const int held = size();
    const int capacity = held + std::max(held, more);
    std::unique_ptr<char[]> place(new char[size_t(capacity)]); // not filled: only what arrives costs memory
    std::copy_n(data(), held, place.get());
    clear();
    m_bytes = std::move(place);
    m_capacity = capacity;
    m_end = held;
}

} // namespace morvek
