// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOTSPOTCONTROL_H
#define MORVEK_HOSTD_HOTSPOTCONTROL_H

#include "answer.h"

#include <QtCore/QJsonObject>

namespace morvek {

/*! What carries out the tethering daemon's requests. */
class HotspotControl
{
public:
    virtual ~HotspotControl() = default;

    /*! What it is started with when nothing else is said. */
    virtual QJsonObject profile() const = 0;
    /*! Changes that; when it runs, it goes on with \a profile, and its inactivity counts anew. */
    virtual void setProfile(const QJsonObject &profile) = 0;

    /*! Begins to start it with \a profile, unless it runs or is being started. */
    virtual void start(const QJsonObject &profile, const AnswerCall &answer) = 0;
    virtual void stop(const AnswerCall &answer) = 0;
};

} // namespace morvek

#endif
