// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKINTERFACEPROVIDERZOP_P_H
#define MORVEK_NETWORKINTERFACEPROVIDERZOP_P_H

#include "networkinterfaceprovider_p.h"
#include "zopvariant.h"

#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtCore/QPointer>

#include <list>
#include <map>

class QJsonArray;

namespace morvek {

class ZopControlCommand;
class ZopDirWatcher;
class ZopObject;

/*!
 * Mirrors the interfaces of the networking daemon and configures them through its control object.
 */
class NetworkInterfaceProviderZop : public NetworkInterfaceProvider
{
    Q_OBJECT

public:
    class ZopInterfaceConnection;

    NetworkInterfaceProviderZop();
    ~NetworkInterfaceProviderZop() override;

    /*! Opens what is not open yet. The provider is ready when everything is. */
    bool init();

    QList<NetworkInterfaceData> interfaces() const override;
    NetworkInterfaceData preferredInterface() const override;
    void configure(AsyncNetworkInterfaceOperation *operation, const NetworkInterface &networkInterface,
                   const NetworkInterfaceConfig &config) override;

    /*! Sends "net_connected" with \a config, and returns the command's identifier. */
    int connectInterface(ZopInterfaceConnection *connection, const NetworkInterfaceConfig &config);
    /*! Sends "net_disconnected", and returns the command's identifier. */
    int disconnectInterface(ZopInterfaceConnection *connection);

    /*! Notes that virtual interfaces may name other parents than when they were linked last. */
    void noteParentNames() { m_parentNamesChanged = true; }

public Q_SLOTS:
    void onZopNetworkingStatusPublicAttributeChanged(const QString &name, const morvek::ZopVariant &value);
    void onZopNetworkingInterfaceAdded(const QString &name);
    void onZopNetworkingInterfaceRemoved(const QString &name);
    void updateParentInterfaces();
    void onControlCommandConfigureDisconnectFinished(morvek::ZopControlCommand *command);
    void onControlCommandConnectFinished(morvek::ZopControlCommand *command);

private:
    Q_DISABLE_COPY(NetworkInterfaceProviderZop)

    /*! A command whose reply is awaited. */
    struct NetZopRequest
    {
        int id = 0;
        ZopInterfaceConnection *connection = nullptr; //!< null once the interface has vanished
        QPointer<AsyncNetworkInterfaceOperation> operation;
        NetworkInterfaceConfig config;
        NetworkInterfaceData lastKnownData; //!< of an interface that has vanished
    };

    using PendingRequests = std::map<int, NetZopRequest>;

    /*! A request whose "net_connected" waits until the interface has lost its addresses. */
    struct AwaitedRelease
    {
        enum Answer { Unanswered, Accepted, Refused };

        NetZopRequest request; //!< its "net_disconnected"
        Answer answer = Unanswered;
        QMetaObject::Connection handler = {};
    };
    using AwaitedReleases = std::list<AwaitedRelease>;

    bool openInterfacesWatcher();
    bool openStatusObject();
    bool openControlObject();
    void endConnection(ZopInterfaceConnection *connection);
    void linkChildren(const QString &name);
    void linkNamedParent(ZopInterfaceConnection *connection);
    void linkParent(ZopInterfaceConnection *connection);
    void setPreferredInterface(const QString &name);
    void setPriorities(const QJsonArray &names);

    template<typename Send>
    int keepRequest(const NetZopRequest &request, Send send);
    void sendConnect(const NetZopRequest &request);
    void sendDisconnect(const NetZopRequest &request);
    void finishRelease(AwaitedReleases::iterator release);
    void dropRelease(AwaitedReleases::iterator release);
    bool answerRelease(int id, bool refused);

    bool takeRequest(const ZopControlCommand *command, NetZopRequest *request);
    void failRequest(const ZopControlCommand *command, const NetZopRequest &request);
    void fail(AsyncNetworkInterfaceOperation *operation, int code, const QString &message);

    ZopObject *controlObject = nullptr;
    ZopObject *statusObject = nullptr;
    ZopDirWatcher *interfacesWatcher = nullptr;
    QMap<QString, ZopInterfaceConnection *> interfaceConnections;
    ZopInterfaceConnection *preferredConnection = nullptr;
    QMultiHash<QString, ZopInterfaceConnection *> m_virtualConnections; //!< by their linkedParent
    bool m_parentNamesChanged = false;                                  //!< since those were read
    PendingRequests pendingRequests;
    AwaitedReleases m_awaitedReleases;
    QMultiMap<QString, ZopInterfaceConnection *> m_supersededConnections; //!< of names that were announced again
};

} // namespace morvek

#endif
