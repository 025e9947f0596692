// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_WIFICASE_H
#define MORVEK_TEST_WIFICASE_H

#include "processes.h"

#include <zopvariant.h>

#include <QtCore/QObject>
#include <QtCore/QTemporaryDir>

#include <memory>

/*! Tests of the Wi-Fi commands, each with a daemon on a root of its own. */
class WifiCase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

protected:
    /*! Writes one attribute of the Wi-Fi daemon's status, as another daemon or application would make it change. */
    static bool publish(const QString &attribute, const morvek::ZopVariant &value);
    /*! Waits until the daemon, which tells what it does, has told \a line. */
    bool waitForDaemon(const QString &line);

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<morvek::Daemon> m_daemon;
    QString m_told; //!< by the daemon, as far as it was waited for
};

#endif
