// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_INTERFACECHANGE_P_H
#define MORVEK_INTERFACECHANGE_P_H

#include "networkcontroller.h"

#include <networkinterface.h>

#include <QtCore/QScopedPointer>
#include <QtCore/QTimer>
#include <QtCore/QVector>

namespace morvek {

class AsyncNetworkInterfaceOperation;
class InterfaceBell;
class NetworkInterfaceService;

/*!
 * Gives an interface one configuration, or two, one after the other.
 *
 * It belongs to the services, for it outlives who has asked for it: an interface that is connected is disconnected
 * first, and asked for what it is to have when its addresses are gone. Until then the services are not idle.
 */
class InterfaceChange : public NetworkController
{
    Q_OBJECT

public:
    enum Step {
        Releasing, //!< its addresses are to go
        Asked,     //!< the daemon is asked for the configuration
        Accepted,  //!< the configuration is to come true; also when it was there and need not be asked for
    };
    enum End {
        Applied,
        Refused,
        Overtaken, //!< another configuration stands
        Vanished,
        Died, //!< the daemon has died
    };

    InterfaceChange(NetworkServices *services, const QString &name);
    ~InterfaceChange() override;

    /*! Whether somebody waits for such a change of the interface \a name. */
    static bool isAwaited(const NetworkServices *services, const QString &name);

    /*! The interface as it is now; empty when there is none. */
    NetworkInterface present() const;
    Step step() const { return m_step; }

    /*!
     * Begins. With two configurations it is also applied when the interface is connected in another way than the first.
     */
    void begin(const QVector<NetworkInterfaceConfig> &configs);
    /*! Nobody waits for it any more: it deletes itself as soon as it can be left, in five seconds at the latest. */
    void abandon();

    /*! Whether \a networkInterface is connected with the addresses of \a config, or with any when that is automatic. */
    static bool isApplied(const NetworkInterface &networkInterface, const NetworkInterfaceConfig &config);

Q_SIGNALS:
    /*! It has ended, with the daemon's \a code and \a text when it was refused. */
    void ended(morvek::InterfaceChange::End end, int code, const QString &text);

protected:
    void onServiceReplaced() override;
    void onAvailabilityChanged() override;

private:
    Q_DISABLE_COPY(InterfaceChange)
    NetworkInterfaceService *interfaceService() const;
    bool isLast() const { return m_index == m_configs.size() - 1; }
    void next();
    void accept();
    void onChanged(const NetworkInterface &networkInterface);
    void onReleased();
    void onSuccess();
    void onFailure();
    void look();
    void onSettled();
    bool isOtherwiseConnected(const NetworkInterface &networkInterface) const;
    void setHeld(bool held);
    void end(End end, int code = 0, const QString &text = QString());
    void leave();

    const QString m_name;
    QVector<NetworkInterfaceConfig> m_configs;
    int m_index = -1;
    Step m_step = Accepted;
    QScopedPointer<AsyncNetworkInterfaceOperation, QScopedPointerDeleteLater> m_operation;
    QTimer m_settle;
    QTimer m_stay;
    bool m_hasAddress = false;
    bool m_isHeld = false;
    bool m_hasEnded = false;
    bool m_isAbandoned = false;
    bool m_isOver = false;
};

} // namespace morvek

#endif
