// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SHAREDMEMORY_H
#define MORVEK_SHAREDMEMORY_H

#include <QtCore/QString>

#include <cstddef>

/*! A file that the processes of a measurement have in their memory; zero at first. */
class SharedMemory
{
public:
    /*! Makes \a file when it is not there. */
    SharedMemory(const QString &file, size_t size);
    ~SharedMemory();

    void *start() const { return m_start; }

private:
    Q_DISABLE_COPY(SharedMemory)
    void *m_start;
    size_t m_size;
};

#endif
