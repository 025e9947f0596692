// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_MANAGERLISTENER_H
#define MORVEK_MANAGERLISTENER_H

#include "busaccesspoints.h"

#include <QtCore/QVariantMap>

#include <memory>

class Rounds;

/*! An application that listens to the network manager itself, through QtDBus. */
class ManagerListener : public QObject
{
    Q_OBJECT

public:
    explicit ManagerListener(Rounds *rounds);
    /*! Listens to the device of this name. */
    void listenToDevice(const QString &interface, const char *slot);
    void listenToAddresses(const QString &interface);

    /*! Scans over and over, and reads each access point, or all objects of the manager at once. */
    void scan(int count, bool atOnce);

public Q_SLOTS:
    void onMtuChanged(const QString &interface, const QVariantMap &changed);
    void onAddressesChanged(const QString &interface, const QVariantMap &changed);
    void onScanned(const QString &interface, const QVariantMap &changed);

private:
    void listen(const QString &path, const char *slot);
    void call(const QString &path, const QString &interface, const QString &member, const QVariantList &arguments,
              const std::function<void(const QDBusMessage &reply)> &answered);
    void requestScan();
    void readEach();
    void readAll();
    void arrived();

    QDBusConnection m_bus;
    Rounds *m_rounds;
    QString m_device;
    bool m_isAtOnce = false;
    std::unique_ptr<BusScanReceiver> m_reader;
};

#endif
