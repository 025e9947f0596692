// SPDX-License-Identifier: Apache-2.0
// The networking daemon's lists of addresses and of gateways. A search by hand for dotted quads stands beside the
// library's.
#include "addresssearch.h"
#include "zopinterfaceconnection_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

using namespace morvek;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QJsonDocument document = QJsonDocument::fromJson(Fuzz::bytes(data, size));
    const QJsonArray array = document.array();
    const AddressSearch::Found found = AddressSearch::find(array);
    QString foundIp;
    QString foundNetmask;
    findIpNetmask(array, foundIp, foundNetmask);
    Fuzz::expectEqual(foundIp, found.ip, "the address");
    Fuzz::expectEqual(foundNetmask, found.netmask, "the netmask");

    NetworkInterfaceProviderZop::ZopInterfaceConnection connection(nullptr);
    connection.interfaceData->configuration.addIpAddress(QNetworkAddressEntry());
    connection.interfaceData->configuration.addGatewayAddress(QHostAddress(QHostAddress::Any));
    connection.setIp4(document);
    connection.setGateway(document);
    const NetworkInterfaceConfig &config = connection.interfaceData->configuration;
    AddressSearch::expectEntries(config.ipAddresses(), found);
    Fuzz::expectEqual(config.gatewayAddresses(), AddressSearch::gateways(array), "the gateways");
    return 0;
}
