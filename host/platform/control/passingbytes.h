// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PASSINGBYTES_H
#define MORVEK_PASSINGBYTES_H

#include <memory>

#include <sys/types.h>

namespace morvek {

/*!
 * Bytes on their way through a socket. They may be a passkey: whatever has passed is wiped, and no memory is kept for
 * none.
 */
class PassingBytes
{
public:
    PassingBytes() = default;
    ~PassingBytes() { clear(); }
    PassingBytes(const PassingBytes &) = delete;
    PassingBytes &operator=(const PassingBytes &) = delete;

    const char *data() const { return m_bytes.get() + m_begin; }
    int size() const { return m_end - m_begin; }

    void append(const char *bytes, int size);
    /*! Lets the first \a size bytes go. */
    void pass(int size);
    void clear();

    /*! Appends at most \a most bytes from \a socket; the result of recv(). */
    ssize_t receive(int socket, int most);
    /*! Hands to \a socket as much as it takes; the result of send(). */
    ssize_t transmit(int socket);

private:
    void reserve(int more);

    std::unique_ptr<char[]> m_bytes;
    int m_capacity = 0;
    int m_begin = 0;
    int m_end = 0;
};

} // namespace morvek

#endif
