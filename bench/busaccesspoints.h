// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_BUSACCESSPOINTS_H
#define MORVEK_BUSACCESSPOINTS_H

#include <QtCore/QVector>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusVirtualObject>

#include <functional>

class QDBusPendingCallWatcher;
class Rounds;

/*! Announces access points, each an object of its own on the bus, and answers for their properties. */
class BusAccessPoints : public QDBusVirtualObject
{
    Q_OBJECT

public:
    BusAccessPoints(const QDBusConnection &bus, int count, Rounds *rounds);

    void announce();
    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override;

private:
    void awaitArrival();

    QDBusConnection m_bus;
    int m_count;
    int m_answered = 0;
    Rounds *m_rounds;
};

/*! Reads all properties of each access point that is announced, and calls \a done with each \a count of them. */
class BusScanReceiver : public QObject
{
    Q_OBJECT

public:
    BusScanReceiver(const QDBusConnection &bus, const QString &service, const QString &interface, int count,
                    const std::function<void()> &done);

    /*! Has read this. */
    void take(const QVariantMap &properties);

public Q_SLOTS:
    void onAdded(const QDBusObjectPath &path);

private:
    struct Record
    {
        QString bssid;
        QString ssid;
        int strength;
        uint frequency;
        uint flags;
    };

    void onRead(QDBusPendingCallWatcher *watcher);

    QDBusConnection m_bus;
    const QString m_service;
    const QString m_interface;
    int m_count;
    std::function<void()> m_done;
    QVector<Record> m_records;
};

int runBusScanSender(const QString &address, int count, Rounds *rounds);
int runBusScanReceiver(const QString &address, int count, Rounds *rounds);

#endif
