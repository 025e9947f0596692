// SPDX-License-Identifier: Apache-2.0
#ifndef WATCHED_H
#define WATCHED_H

#include "daemonclient.h"

#include <QtTest/QtTest>

/*! An operation of a service that is watched from its first moment; it is deleted with its watcher. */
template<typename Operation>
struct Watched
{
    explicit Watched(Operation *started)
        : operation(started),
          success(started, &Operation::success),
          failure(started, &Operation::failure)
    {
    }

    bool isOpen() const { return success.isEmpty() && failure.isEmpty(); }
    /*! "ok", "CODE MESSAGE", or "open" when it does not end within \a patience. */
    QString outcome(int patience = Patience)
    {
        if (!QTest::qWaitFor([this] { return !isOpen(); }, patience))
            return QStringLiteral("open");
        if (!success.isEmpty())
            return QStringLiteral("ok");
        return QStringLiteral("%1 %2").arg(operation->error().code()).arg(operation->error().message());
    }

    std::unique_ptr<Operation> operation;
    QSignalSpy success;
    QSignalSpy failure;
};

#endif
