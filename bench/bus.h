// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_BUS_H
#define MORVEK_BUS_H

#include <QtCore/QObject>
#include <QtCore/QVariantMap>

#include <memory>

class Process;
class QDBusConnection;
class Rounds;

/*! What receives the updates that come as D-Bus signals. */
class BusReceiver : public QObject
{
    Q_OBJECT

public:
    explicit BusReceiver(Rounds *rounds);

public Q_SLOTS:
    void onChanged(const QString &interface, const QVariantMap &changed, const QStringList &invalidated);

private:
    Rounds *m_rounds;
};

/*! What answers method calls over D-Bus, as a daemon that accepts every request at once. */
class BusDaemon : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "morvek.bench.Daemon")

public Q_SLOTS:
    Q_SCRIPTABLE void configure(const QString &interface, const QVariantMap &settings);
};

/*! A bus of its own, which ends with the process that is returned. */
std::unique_ptr<Process> startBus(QString *address);
QDBusConnection connectToBus(const QString &address);
/*! Returns when \a bus has carried out what was asked of it before, a subscription for one. */
void settle(QDBusConnection *bus);

int runBusSender(const QString &address, Rounds *rounds);
int runBusReceiver(const QString &address, Rounds *rounds);
int runBusDaemon(const QString &address);
int runBusRequester(const QString &address, Rounds *rounds);

#endif
