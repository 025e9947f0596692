// SPDX-License-Identifier: Apache-2.0
#include "networkplugin.h"

#include "interfacetype.h"

#include <hotspotcontroller.h>
#include <hotspotform.h>
#include <interfacecontroller.h>
#include <interfacemodel.h>
#include <ipv4form.h>
#include <networkservices.h>
#include <wificontroller.h>
#include <wifinetworkmodel.h>

#include <QtQml/qqml.h>

namespace morvek {

void NetworkPlugin::registerTypes(const char *uri)
{
    qmlRegisterType<NetworkServices>(uri, 1, 0, "NetworkServices");
    qmlRegisterType<WifiController>(uri, 1, 0, "WifiController");
    qmlRegisterType<InterfaceController>(uri, 1, 0, "InterfaceController");
    qmlRegisterType<HotspotController>(uri, 1, 0, "HotspotController");
    qmlRegisterType<Ipv4Form>(uri, 1, 0, "Ipv4Form");

    // Each of these is had from one of those.
    qmlRegisterUncreatableType<NetworkController>(
        uri, 1, 0, "NetworkController",
        QStringLiteral("Create a WifiController, an InterfaceController or a HotspotController."));
    qmlRegisterUncreatableType<NetworkRequest>(
        uri, 1, 0, "NetworkRequest",
        QStringLiteral("A controller's functions, such as WifiController.join(), return it."));
    qmlRegisterUncreatableType<WifiNetworkModel>(uri, 1, 0, "WifiNetworkModel",
                                                 QStringLiteral("It is a WifiController's networks."));
    qmlRegisterUncreatableType<InterfaceModel>(uri, 1, 0, "InterfaceModel",
                                               QStringLiteral("It is an InterfaceController's interfaces."));
    qmlRegisterUncreatableType<HotspotForm>(uri, 1, 0, "HotspotForm",
                                            QStringLiteral("It is a HotspotController's form."));
    qmlRegisterUncreatableMetaObject(InterfaceType::staticMetaObject, uri, 1, 0, "InterfaceType",
                                     QStringLiteral("It only has the names of types."));
}

} // namespace morvek
