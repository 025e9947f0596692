// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPINTERFACECONNECTION_P_H
#define MORVEK_ZOPINTERFACECONNECTION_P_H

#include "networkinterfacedata.h"
#include "networkinterfaceproviderzop_p.h"
#include "zopchangeset.h"

#include <QtCore/QObject>

#include <memory>

class QJsonArray;
class QJsonDocument;

namespace morvek {

class ZopObject;

/*!
 * Keeps the object of one interface and turns its attributes into the interface's record.
 */
class NetworkInterfaceProviderZop::ZopInterfaceConnection : public QObject
{
    Q_OBJECT

public:
    /*! A provider, as \a parent, hears of what may change the names of parents. */
    explicit ZopInterfaceConnection(QObject *parent);
    ~ZopInterfaceConnection() override;

    /*! Reads the record of the interface \a name from \a object. */
    void setZopInterface(const QString &name, ZopObject *object);
    /*! The name of the interface that carries this one, as the object tells it now. */
    QString parentInterface() const;

    void setIp4(const QJsonDocument &addresses);
    void setGateway(const QJsonDocument &gateways);
    void setMode(const QString &value);
    void setType(const QString &value);
    void setVirtual(const QString &value);

    std::unique_ptr<NetworkInterfaceData> interfaceData;
    ZopObject *zopObject = nullptr;
    QString linkedParent; //!< what parentInterface() was when the provider linked it last

Q_SIGNALS:
    void interfaceAttributesChanged(const morvek::NetworkInterfaceData &data);
    void interfaceConnected(const morvek::NetworkInterfaceData &data);
    void interfaceDisconnected(const morvek::NetworkInterfaceData &data);
    void interfaceParentChanged();

public Q_SLOTS:
    void onZopInterfaceAttributesChanged(const morvek::ZopChangeset &changes);

private:
    Q_DISABLE_COPY(ZopInterfaceConnection)
    ZopVariant attribute(const QString &name) const;
    void applyConnected();
    bool applyAttribute(const QString &name, const ZopVariant &value);

    NetworkInterfaceProviderZop *const m_provider;
};

/*! Picks the last IPv4 address of \a addresses, each written as address, slash and netmask. */
void findIpNetmask(const QJsonArray &addresses, QString &ip, QString &netmask);

/*! The type for the networking daemon's word \a type. */
NetworkInterface::InterfaceType networkInterfaceStringToType(const QString &type);

} // namespace morvek

#endif
