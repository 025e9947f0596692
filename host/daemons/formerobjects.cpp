// SPDX-License-Identifier: Apache-2.0
#include "formerobjects.h"

#include "objectpublisher.h"
#include "wirenames.h"
#include "zopobject.h"

#include <QtCore/QStringList>

namespace morvek {

namespace {

QString controlOf(Service service)
{
    switch (service) {
    case Service::Networking:
        return Wire::ControlObject;
    case Service::Wifi:
        return Wire::WifiControlObject;
    case Service::Tethering:
        break;
    }
    return Wire::TetheringControlObject;
}

bool list(Service service, QStringList *paths, QString *error)
{
    switch (service) {
    case Service::Networking:
        break;
    case Service::Wifi:
        *paths = QStringList {Wire::WifiStatusObject};
        return true;
    case Service::Tethering:
        *paths = QStringList {Wire::TetheringStatusObject};
        return true;
    }
    QStringList interfaces;
    const bool isListed = ObjectPublisher::list(Wire::InterfacesDirectory, &interfaces, error);
    for (const QString &name : qAsConst(interfaces))
        *paths += Wire::InterfacesDirectory + QLatin1Char('/') + name;
    *paths += Wire::StatusObject;
    return isListed;
}

} // namespace

bool FormerObjects::remove(Service service, QString *error)
{
    if (ZopObject(controlOf(service), ZopObject::Subscribe, false).isValid())
        return true;
    QStringList paths;
    ObjectPublisher publisher; // what is not there is no mistake to it
    if (!list(service, &paths, error))
        return false;
    for (const QString &path : qAsConst(paths)) {
        if (!publisher.remove(path, error)) {
            error->prepend(QStringLiteral("cannot remove \"%1\": ").arg(path));
            return false;
        }
    }
    return true;
}

} // namespace morvek
