// SPDX-License-Identifier: Apache-2.0
#include "pace.h"

#include "tracing.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>

#include <unistd.h>

namespace {

constexpr qint64 Patience = 120 * 1000; // milliseconds
constexpr useconds_t Pause = 100;

template<typename Condition>
void await(const Condition &holds)
{
    QElapsedTimer timer;
    timer.start();
    while (!holds()) {
        if (timer.hasExpired(Patience))
            qFatal("a counted process does not come to rest");
        usleep(Pause);
    }
}

bool isAsleep(int process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("a counted process is gone");
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2, 1) == "S";
}

} // namespace

Pace::Pace(const QString &file)
    : m_memory(file, sizeof(Page)),
      m_page(static_cast<Page *>(m_memory.start()))
{
}

void Pace::setReady()
{
    m_page->process = getpid();
}

void Pace::begin()
{
    const int counted = m_page->begun - WarmUp;
    if (counted >= 0 && counted % Counted == 0)
        markCounted();
    else
        markStep();
    ++m_page->begun;
}

void Pace::end()
{
    ++m_page->done;
}

void Pace::awaitLeave() const
{
    while (m_page->leaves < m_page->begun) { }
}

void Pace::awaitReady() const
{
    await([this] { return m_page->process != 0; });
    awaitSleep();
}

void Pace::awaitBegun(int things) const
{
    await([this, things] { return m_page->begun >= things; });
}

void Pace::awaitRest(int things) const
{
    await([this, things] { return m_page->done >= things; });
    awaitSleep();
}

void Pace::mayGoOn() const
{
    ++m_page->leaves;
}

// A process that is traced stops at each system call, which is no sleep.
void Pace::awaitSleep() const
{
    await([this] { return isAsleep(m_page->process); });
}
