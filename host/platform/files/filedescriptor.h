// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_FILEDESCRIPTOR_H
#define MORVEK_FILEDESCRIPTOR_H

#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace morvek {

/*! A file descriptor that is closed with its owner. */
class FileDescriptor
{
public:
    explicit FileDescriptor(int fd = -1)
        : m_fd(fd)
    {
    }
    FileDescriptor(FileDescriptor &&other) noexcept
        : m_fd(other.release())
    {
    }
    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        reset(other.release());
        return *this;
    }
    ~FileDescriptor() { reset(); }

    /*! Whether this process can open \a count more, which is tried. */
    static bool areToSpare(int count);
    /*! The same of the last numbers that it may use: if these are free only the whole system may have too few. */
    static bool areLastFree(int count);

    int get() const { return m_fd; }
    bool isOpen() const { return m_fd != -1; }
    int release() { return std::exchange(m_fd, -1); }
    void reset(int fd = -1)
    {
        if (m_fd != -1)
            close(m_fd);
        m_fd = fd;
    }

private:
    int m_fd;
};

} // namespace morvek

#endif
