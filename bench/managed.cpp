// SPDX-License-Identifier: Apache-2.0
#include "managed.h"

#include "bus.h"
#include "fakemanager.h"
#include "madewith.h"
#include "managerlistener.h"
#include "measurement.h"
#include "memory.h"
#include "report.h"
#include "restingapplication.h"
#include "rounds.h"

#include <QtCore/QCoreApplication>

#include <iostream>
#include <limits>

namespace {

constexpr double ToListener = 1.3;
constexpr int WarmUp = 200;
constexpr int Counted = 2000;
constexpr int ScanWarmUp = 10;
constexpr int CountedScans = 200;
constexpr int Few = 20;
constexpr int Many = 200;

const QString Wired = QStringLiteral("eth0");
const QString Radio = QStringLiteral("wlan0");
const QString MtuUpdates = QStringLiteral("manager-mtu");
const QString MtuListener = QStringLiteral("manager-mtu-listener");
const QString AddressUpdates = QStringLiteral("manager-address");
const QString AddressListener = QStringLiteral("manager-address-listener");
const QString Scans = QStringLiteral("manager-scans");
const QString ScanEachListener = QStringLiteral("manager-scan-each-listener");
const QString ScanAllListener = QStringLiteral("manager-scan-all-listener");
const QStringList OverManager {QStringLiteral("--network"), QStringLiteral("manager")};

/*! A laptop: a cable with an address, and a radio. */
class Laptop
{
public:
    explicit Laptop(int accessPoints)
    {
        const QString wired = m_manager.addEthernet(Wired);
        m_radio = m_manager.addWifi(Radio);
        for (int number = 0; number < accessPoints; ++number)
            m_points += m_manager.addAccessPoint(m_radio, "Network " + QByteArray::number(number),
                                                 {{QStringLiteral("RsnFlags"), FakeManager::Wpa2}});
        m_manager.beginActivation(wired, m_manager.addProfile({}));
        m_manager.activate(wired);
        m_manager.setIp4(wired, {QStringLiteral("10.0.0.2/24")}, QStringLiteral("10.0.0.1"));
        if (!m_manager.start())
            qFatal("no manager on the bus");
        std::cout << "ready" << std::endl;
    }

    int runUpdates(Rounds *rounds, bool ofAddresses)
    {
        const QString wired = m_manager.device(Wired);
        rounds->awaitReady();
        for (uint number = 1; rounds->next(); ++number) {
            if (ofAddresses)
                m_manager.setIp4(wired, {QStringLiteral("10.0.0.%1/24").arg(2 + number % 200)},
                                 QStringLiteral("10.0.0.1"));
            else
                m_manager.change(wired, {{QStringLiteral("Mtu"), number}});
            rounds->awaitArrival();
        }
        return 0;
    }

    /*! Each scan that is asked for finds that all have drifted. */
    int runScans(Rounds *rounds)
    {
        uchar strength = 50;
        QObject::connect(&m_manager, &BusObjects::called, [&](const BusCall &call) {
            if (call.member != QLatin1String("RequestScan"))
                return;
            strength = strength == 50 ? 60 : 50;
            for (const QString &point : m_points)
                m_manager.change(point, {{QStringLiteral("Strength"), strength}});
            if (!rounds->next()) {
                QCoreApplication::quit();
                return;
            }
            m_manager.finishScan(m_radio);
            rounds->awaitArrival();
        });
        return QCoreApplication::exec();
    }

private:
    FakeManager m_manager;
    QString m_radio;
    QStringList m_points;
};

/*! The manager's role \a manager beside \a application, which is reached, and \a hostd between them, if at all. */
Quantiles measureBeside(int warmUp, int counted, const QString &manager, bool hostd, const QStringList &application)
{
    return measure(warmUp, counted, [&](const QString &page, const QString &) {
        QString address;
        const auto bus = startBus(&address);
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
        const auto sender = Process::role({manager, QString(), page});
        sender->readLine();
        const auto daemon = hostd ? startHostd(OverManager) : nullptr;
        Process::role(QStringList(application) << page)->finish();
    });
}

void measureUpdates(Report *report, const QString &what, const QString &manager, const QString &listener)
{
    for (const bool oneCore : {true, false}) {
        useOneCore(oneCore);
        const Quantiles ours = measureBeside(WarmUp, Counted, manager, true, {QStringLiteral("service-receiver")});
        const Quantiles theirs = measureBeside(WarmUp, Counted, manager, false, {listener, QString()});
        const QString name = QStringLiteral("manager's signal of %1 to slot, %2, ")
                                 .arg(what, oneCore ? QStringLiteral("one core") : QStringLiteral("all cores"));
        const QString yardstick = QStringLiteral("QtDBus application at the manager");
        report->compare(name + QStringLiteral("median"), ours.median, QStringLiteral("us"), yardstick, theirs.median,
                        oneCore ? ToListener : 0);
        report->compare(name + QStringLiteral("99th percentile"), ours.percentile99, QStringLiteral("us"), yardstick,
                        theirs.percentile99);
    }
    useOneCore(false);
}

void measureScans(Report *report)
{
    useOneCore(true);
    const double ours =
        measureBeside(ScanWarmUp, CountedScans, Scans, true, {QStringLiteral("scanner"), QString::number(Many)}).median;
    const std::pair<QString, QString> yardsticks[] = {
        {QStringLiteral("QtDBus application that reads each"), ScanEachListener},
        {QStringLiteral("QtDBus application that reads all at once"), ScanAllListener}};
    for (const auto &[yardstick, role] : yardsticks)
        report->compare(QStringLiteral("manager's scan to success, %1 access points").arg(Many), ours,
                        QStringLiteral("us"), yardstick,
                        measureBeside(ScanWarmUp, CountedScans, Scans, false, {role, QString::number(Many)}).median,
                        ToListener);
    useOneCore(false);
}

void measureDaemon(Report *report)
{
    const Root root;
    QString address;
    const auto bus = startBus(&address);
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
    const auto manager = Process::role({Scans});
    manager->readLine();
    for (const QByteArray field : {"Rss", "Private_Dirty"}) {
        const double ours = kibibytes(*startHostd(OverManager), field);
        report->compare(QStringLiteral("morvek-hostd over a manager, ") + QLatin1String(field), ours,
                        QStringLiteral("KiB"), QStringLiteral("over a scenario"), kibibytes(*startHostd(), field));
    }
}

} // namespace

void measureManaged(Report *report)
{
    if (!WithManager) {
        report->add(QStringLiteral("manager's signal to slot"), std::numeric_limits<double>::quiet_NaN(),
                    QStringLiteral("us"));
        return;
    }
    measureUpdates(report, QStringLiteral("an MTU"), MtuUpdates, MtuListener);
    measureUpdates(report, QStringLiteral("an address"), AddressUpdates, AddressListener);
    measureScans(report);
    measureDaemon(report);
}

int runManagedRole(const QStringList &arguments)
{
    const QString role = arguments.value(0);
    const QString page = arguments.value(2);
    if (!role.startsWith(QLatin1String("manager-")))
        return -1;
    const auto rounds = page.isEmpty() ? nullptr : std::make_unique<Rounds>(page);
    if (role == MtuUpdates || role == AddressUpdates)
        return Laptop(Few).runUpdates(rounds.get(), role == AddressUpdates);
    if (role == Scans)
        return Laptop(Many).runScans(rounds.get());
    ManagerListener listener(rounds.get());
    if (role == MtuListener) {
        listener.listenToDevice(Wired, SLOT(onMtuChanged(QString, QVariantMap)));
        rounds->setReady();
    } else if (role == AddressListener) {
        listener.listenToAddresses(Wired);
        rounds->setReady();
    } else {
        listener.listenToDevice(Radio, SLOT(onScanned(QString, QVariantMap)));
        listener.scan(Many, role == ScanAllListener);
    }
    return QCoreApplication::exec();
}
