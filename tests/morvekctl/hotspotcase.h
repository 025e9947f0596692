// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_HOTSPOTCASE_H
#define MORVEK_TEST_HOTSPOTCASE_H

#include "daemoncase.h"

/*! Tests of the hotspot's commands. */
class HotspotCase : public DaemonCase
{
    Q_OBJECT

protected:
    HotspotCase()
        : DaemonCase(QStringLiteral("/zop/services/tethering/status"))
    {
    }

    /*! Starts the daemon with a hotspot that is off, and with \a faults, JSON without the brackets around it. */
    bool start(const QByteArray &faults = {}, const QStringList &arguments = {});
    /*! The fault that answers requests to read the profile with \a hotspot, after \a skip of them. */
    static QByteArray tellsProfile(const QByteArray &hotspot, int skip = 0);
    QString state() const { return published(QStringLiteral("state")); }
};

#endif
