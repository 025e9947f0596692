// SPDX-License-Identifier: Apache-2.0
#include "rounds.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <ctime>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

qint64 now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
}

void await(sem_t *semaphore)
{
    while (sem_wait(semaphore) != 0 && errno == EINTR) { }
}

} // namespace

Rounds::Rounds(const QString &file)
{
    map(file, O_RDWR);
}

Rounds::Rounds(const QString &file, int warmUp, int counted)
{
    if (warmUp + counted > Most)
        qFatal("so many rounds do not fit into the shared page");
    map(file, O_RDWR | O_CREAT);
    m_page->warmUp = warmUp;
    m_page->all = warmUp + counted;
    sem_init(&m_page->ready, 1, 0);
    sem_init(&m_page->arrival, 1, 0);
}

Rounds::~Rounds()
{
    munmap(m_page, sizeof(Page));
}

void Rounds::map(const QString &file, int flags)
{
    const int fd = open(QFile::encodeName(file).constData(), flags | O_CLOEXEC, 0600);
    if (fd == -1 || ftruncate(fd, sizeof(Page)) != 0)
        qFatal("cannot open the shared page");
    void *memory = mmap(nullptr, sizeof(Page), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (memory == MAP_FAILED)
        qFatal("cannot map the shared page");
    close(fd);
    m_page = static_cast<Page *>(memory);
}

void Rounds::setReady()
{
    sem_post(&m_page->ready);
}

bool Rounds::arrived()
{
    m_page->nanoseconds[size_t(m_page->received)] = now() - m_page->sentAt;
    const bool more = ++m_page->received < m_page->all;
    sem_post(&m_page->arrival);
    return more;
}

void Rounds::awaitReady()
{
    await(&m_page->ready);
}

bool Rounds::next()
{
    if (m_page->sent == m_page->all)
        return false;
    ++m_page->sent;
    m_page->sentAt = now();
    return true;
}

void Rounds::awaitArrival()
{
    await(&m_page->arrival);
}

QVector<double> Rounds::samples() const
{
    QVector<double> result;
    for (int round = m_page->warmUp; round < m_page->all; ++round)
        result.append(double(m_page->nanoseconds[size_t(round)]) / 1000);
    std::sort(result.begin(), result.end());
    return result;
}
