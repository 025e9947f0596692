// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PROFILEDAEMON_H
#define MORVEK_PROFILEDAEMON_H

#include "zopobject.h"

#include <QtCore/QVector>

#include <memory>

/*!
 * The least tethering manager: it tells its profile and accepts every request. From "stop", which it answers, to
 * "start" it lets all requests wait.
 */
class ProfileDaemon : public QObject
{
    Q_OBJECT

public:
    ProfileDaemon();

private:
    void onRequest(const morvek::ZopChangeset &request);
    void reply(const morvek::ZopChangeset &request);

    morvek::ZopVariant m_profile;
    bool m_isWaiting = false;
    QVector<morvek::ZopChangeset> m_waiting;
    std::unique_ptr<morvek::ZopObject> m_status;
    std::unique_ptr<morvek::ZopObject> m_control;
};

#endif
