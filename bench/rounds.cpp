// SPDX-License-Identifier: Apache-2.0
#include "rounds.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

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
    : m_memory(file, sizeof(Page)),
      m_page(static_cast<Page *>(m_memory.start()))
{
}

Rounds::Rounds(const QString &file, int warmUp, int counted, int receivers)
    : Rounds(file)
{
    if (warmUp + counted > Most)
        qFatal("so many rounds do not fit into the shared page");
    m_page->warmUp = warmUp;
    m_page->all = warmUp + counted;
    m_page->receivers = receivers;
    sem_init(&m_page->ready, 1, 0);
    sem_init(&m_page->arrival, 1, 0);
}

void Rounds::setReady()
{
    sem_post(&m_page->ready);
}

bool Rounds::arrived()
{
    const int before = m_page->received++;
    const int round = before / m_page->receivers;
    if (before % m_page->receivers == m_page->receivers - 1) {
        m_page->nanoseconds[size_t(round)] = now() - m_page->sentAt;
        sem_post(&m_page->arrival);
    }
    return round + 1 < m_page->all;
}

void Rounds::awaitReady()
{
    for (int i = 0; i < m_page->receivers; ++i)
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
