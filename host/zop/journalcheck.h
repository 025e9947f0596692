// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_JOURNALCHECK_H
#define MORVEK_JOURNALCHECK_H

#include "zoppath.h"

#include <QtCore/QStringList>

/*! What the file of a state object holds, read from its beginning to its end. */
struct JournalCheck
{
    explicit JournalCheck(const morvek::ZopPath &path);

    QStringList troubles;
    QString summary; //!< in a few words, when it could be read
};

#endif
