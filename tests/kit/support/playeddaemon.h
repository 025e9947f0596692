// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_PLAYEDDAEMON_H
#define MORVEK_TEST_PLAYEDDAEMON_H

#include <zopobject.h>

#include <QtCore/QString>

/*! A daemon that publishes what a service needs to become ready, and answers nothing. It ends with this object. */
class PlayedDaemon
{
public:
    enum Kind { Networking, Wifi, Tethering };

    explicit PlayedDaemon(Kind kind)
        : m_status(statusOf(kind), morvek::ZopObject::Publish, false),
          m_control(controlOf(kind), morvek::ZopObject::Publish, true)
    {
    }

    bool isValid() const { return m_status.isValid() && m_control.isValid(); }
    morvek::ZopObject &status() { return m_status; }
    morvek::ZopObject &control() { return m_control; }

    static QString statusOf(Kind kind)
    {
        return folderOf(kind) + (kind == Networking ? QStringLiteral("all/status_public") : QStringLiteral("status"));
    }
    static QString controlOf(Kind kind) { return folderOf(kind) + QStringLiteral("control"); }
    /*! Removes what dead daemons have left. */
    static void forgetAll()
    {
        for (Kind kind : {Networking, Wifi, Tethering})
            morvek::ZopObject::remove(statusOf(kind));
    }

private:
    static QString folderOf(Kind kind)
    {
        static const char *const names[] = {"networking", "wifi", "tethering"};
        return QStringLiteral("/zop/services/%1/").arg(QLatin1String(names[kind]));
    }

    morvek::ZopObject m_status;
    morvek::ZopObject m_control;
};

#endif
