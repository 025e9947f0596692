// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_DAEMONCASE_H
#define MORVEK_TEST_DAEMONCASE_H

#include "processes.h"

#include <zopvariant.h>

#include <QtCore/QObject>
#include <QtCore/QTemporaryDir>

#include <memory>

/*! Tests of the commands of one daemon, each with a daemon on a root of its own. */
class DaemonCase : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    void init();
    void cleanup();

protected:
    /*! \a statusObject is what the daemon publishes its state in. */
    explicit DaemonCase(const QString &statusObject)
        : m_statusObject(statusObject)
    {
    }

    /*! Writes one attribute of the daemon's status, as another daemon or application would make it change. */
    bool publish(const QString &attribute, const morvek::ZopVariant &value) const
    {
        return publish(m_statusObject, attribute, value);
    }
    /*! The same for any object; it is made when there is none. */
    static bool publish(const QString &object, const QString &attribute, const morvek::ZopVariant &value);
    /*! What the daemon's status tells. */
    QString published(const QString &attribute) const;
    /*! Waits until the daemon, which tells what it does, has told \a line. */
    bool waitForDaemon(const QString &line);
    morvek::ToolResult run(const QString &arguments, const QStringList &variables = {}) const
    {
        return morvek::runTool(m_root->path(), arguments.split(QLatin1Char(' ')), variables);
    }

    const QString m_statusObject;
    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<morvek::Daemon> m_daemon;
    QString m_told; //!< by the daemon, as far as it was waited for
};

class WifiCase : public DaemonCase
{
    Q_OBJECT

protected:
    WifiCase()
        : DaemonCase(QStringLiteral("/zop/services/wifi/status"))
    {
    }
};

#endif
