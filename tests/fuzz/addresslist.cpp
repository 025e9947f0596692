// SPDX-License-Identifier: Apache-2.0
// The networking daemon's lists of addresses and of gateways. A search by hand for dotted quads stands beside the
// library's.
#include "addresssearch.h"
#include "zopinterfaceconnection_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

using namespace morvek;

namespace {

void checkAddress(const QHostAddress &actual, const QString &text)
{
    quint32 plain = 0;
    if (AddressSearch::readPlain(text, &plain))
        Fuzz::expectEqual(actual, QHostAddress(plain), "an address in its usual spelling");
    if (text.contains(QChar(0)) || text.isEmpty())
        Fuzz::expect(actual.isNull(), "no address");
}

} // namespace

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
    const QList<QNetworkAddressEntry> entries = connection.interfaceData->configuration.ipAddresses();
    Fuzz::expectEqual(entries.size(), found.isWhole() ? 1 : 0, "how many addresses");
    if (!entries.isEmpty())
        checkAddress(entries.first().ip(), found.ip);
    const QList<QHostAddress> gateways = connection.interfaceData->configuration.gatewayAddresses();
    Fuzz::expectEqual(gateways.size(), qMin(array.size(), 1), "how many gateways");
    if (!gateways.isEmpty())
        checkAddress(gateways.first(), array.first().toString());
    return 0;
}
