// SPDX-License-Identifier: Apache-2.0
#ifndef DESCRIPTORHOARD_H
#define DESCRIPTORHOARD_H

#include "sanitizedheap.h"

#include <QtCore/QVector>

#include <sys/resource.h>
#include <unistd.h>

/*! Takes all file descriptors that this process may have, and gives them back. */
class DescriptorHoard
{
public:
    DescriptorHoard() = default;
    ~DescriptorHoard() { giveBack(); }

    /*! Lets this process have \a count at most. */
    static void limit(rlim_t count)
    {
        rlimit present = {};
        getrlimit(RLIMIT_NOFILE, &present);
        present.rlim_cur = count;
        setrlimit(RLIMIT_NOFILE, &present);
    }

    /*! How many are left over: a sanitizer's look at a pointer needs two, and takes it for wild without them. */
    static constexpr int ofSanitizers()
    {
#ifdef HEAP_IS_SANITIZED
        return 2;
#else
        return 0;
#endif
    }

    /*! What is free now, too; how many it has. */
    int takeAll()
    {
        for (int fd = dup(STDOUT_FILENO); fd != -1; fd = dup(STDOUT_FILENO))
            m_taken.append(fd);
        for (int i = 0; i < ofSanitizers() && !m_taken.isEmpty(); ++i)
            close(m_taken.takeLast());
        return m_taken.size();
    }

    void giveBack()
    {
        for (const int fd : qAsConst(m_taken))
            close(fd);
        m_taken.clear();
    }

private:
    Q_DISABLE_COPY(DescriptorHoard)
    QVector<int> m_taken;
};

#endif
