// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTS_EVENTS_H
#define MORVEK_TESTS_EVENTS_H

#include "zopdirwatcher.h"
#include "zopobject.h"

#include <QtCore/QStringList>

/*!
 * Writes down what is told from now on, one line a signal: of an object "a=1", "-b" and "{a=1 -b}", of a
 * directory "+name" and "-name".
 */
class Events : public QObject
{
    Q_OBJECT

public:
    explicit Events(morvek::ZopObject *object);
    explicit Events(morvek::ZopDirWatcher *watcher);

    QStringList lines;

    /*! Only the whole updates. */
    QStringList updates() const;
    /*! Turns the event loop until \a line was told; false when it is not told for long. */
    bool wait(const QString &line) const;
};

#endif
