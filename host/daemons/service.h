// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SERVICE_H
#define MORVEK_HOSTD_SERVICE_H

#include <QtCore/QLatin1String>

namespace morvek {

/*! What there is a daemon for. */
enum class Service { Networking, Wifi, Tethering };

struct ServiceWords
{
    Service service;
    QLatin1String name;
    QLatin1String statusObject; //!< as scenarios name it
};

inline const ServiceWords Services[] = {
    {Service::Networking, QLatin1String("networking"), QLatin1String("status_public")},
    {Service::Wifi, QLatin1String("wifi"), QLatin1String("wifi/status")},
    {Service::Tethering, QLatin1String("tethering"), QLatin1String("tethering/status")},
};

inline QLatin1String nameOf(Service service)
{
    for (const ServiceWords &one : Services) {
        if (one.service == service)
            return one.name;
    }
    return {};
}

} // namespace morvek

#endif
