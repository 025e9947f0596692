// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_PRIVATEBUS_H
#define MORVEK_TEST_PRIVATEBUS_H

#include "childprocess.h"

#include <QtCore/QTemporaryDir>

/*!
 * A system bus of its own, for this process and those that it starts afterwards.
 *
 * Programs hold on to the system bus that they have reached first, and GLib ends them when it goes: a test program has
 * one, made before the first client and destroyed after the last one.
 */
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();

    /*! Why there is none; empty when there is one. */
    QString errorString() const { return m_error; }
    QString address() const;

private:
    Q_DISABLE_COPY(PrivateBus)
    QTemporaryDir m_folder;
    QString m_error;
    ChildProcess m_process;
};

#endif
