// SPDX-License-Identifier: Apache-2.0
#ifndef PROCESSUSAGE_H
#define PROCESSUSAGE_H

#include <QtCore/QtGlobal>

/*! Whether what was built here has sanitizers, whose memory grows on its own. */
bool hasSanitizers();
/*! Bytes of this process's heap that are in use. */
qint64 heapInUse();
/*! How many file descriptors a process has open. */
int openDescriptors(qint64 processId);
/*! Bytes of a process that are backed by no file. */
qint64 anonymousMemory(qint64 processId);
/*! The most that it has had at any time. */
qint64 peakMemory(qint64 processId);

#endif
