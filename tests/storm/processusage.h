// SPDX-License-Identifier: Apache-2.0
#ifndef PROCESSUSAGE_H
#define PROCESSUSAGE_H

#include <QtCore/QtGlobal>

/*! Bytes of this process's heap that are in use. */
qint64 heapInUse();
/*! How many file descriptors a process has open. */
int openDescriptors(qint64 processId);
/*! Bytes of a process that are backed by no file. */
qint64 anonymousMemory(qint64 processId);

/*! Takes all file descriptors that a process may have, and gives them back. */
class DescriptorHoard
{
public:
    DescriptorHoard() = default;
    ~DescriptorHoard() { giveBack(); }

    int takeAll();
    void giveBack();

private:
    Q_DISABLE_COPY(DescriptorHoard)
    int m_count = 0;
    int m_taken[4096];
};

#endif
