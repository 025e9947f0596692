// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SEENACCESSPOINT_H
#define MORVEK_HOSTD_SEENACCESSPOINT_H

#include "accesspointtext.h"
#include "gobject.h"

#include <QtCore/QVector>

namespace morvek {

/*! An access point that the network manager lists. */
struct SeenAccessPoint
{
    QString bssid;
    QString ssid;
    QByteArray path; //!< the manager's object
    int percent = 0;
    int frequency = 0;
    bool infrastructure = true;
    AccessPointSecurity security;

    static SeenAccessPoint read(NMAccessPoint *accessPoint);
    /*! Those that the last finished scan of \a radio has found, and the one in use. */
    static QVector<SeenAccessPoint> readAll(NMDeviceWifi *radio);
};

} // namespace morvek

#endif
