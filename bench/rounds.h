// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ROUNDS_H
#define MORVEK_ROUNDS_H

#include "sharedmemory.h"

#include <QtCore/QVector>

#include <array>
#include <atomic>

#include <semaphore.h>

/*!
 * A page of memory that the processes of a measurement share. The sender notes the time and sends; the last receiver
 * that is reached notes how long it took and lets the sender go on. So one message is under way at a time.
 */
class Rounds
{
public:
    /*! Maps \a file. */
    explicit Rounds(const QString &file);
    /*! Creates \a file, for so many rounds of which the first \a warmUp do not count. */
    Rounds(const QString &file, int warmUp, int counted, int receivers = 1);

    // The receiver's side.
    void setReady();
    /*! The message has arrived; false when it was the last one. */
    bool arrived();

    // The sender's side.
    void awaitReady();
    /*! Just before sending; false when enough has been sent. */
    bool next();
    void awaitArrival();

    /*! Microseconds, in ascending order. */
    QVector<double> samples() const;

    static constexpr int Most = 3200;

private:
    struct Page
    {
        sem_t ready;
        sem_t arrival;
        std::atomic<qint64> sentAt;
        int warmUp;
        int all;
        int receivers;
        int sent;
        std::atomic<int> received;
        std::array<qint64, Most> nanoseconds;
    };

    SharedMemory m_memory;
    Page *m_page;
};

#endif
