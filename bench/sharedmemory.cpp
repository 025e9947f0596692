// SPDX-License-Identifier: Apache-2.0
#include "sharedmemory.h"

#include <QtCore/QFile>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

SharedMemory::SharedMemory(const QString &file, size_t size)
    : m_size(size)
{
    const int fd = open(QFile::encodeName(file).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd == -1 || ftruncate(fd, off_t(size)) != 0)
        qFatal("cannot open the shared memory");
    m_start = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (m_start == MAP_FAILED)
        qFatal("cannot map the shared memory");
    close(fd);
}

SharedMemory::~SharedMemory()
{
    munmap(m_start, m_size);
}
