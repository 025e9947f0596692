// SPDX-License-Identifier: Apache-2.0
#include "countedroles.h"

#include "asyncwifiscanoperation.h"
#include "pace.h"
#include "process.h"
#include "scandaemon.h"
#include "services.h"
#include "tracing.h"
#include "zopobject.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>

#include <iostream>
#include <memory>

using namespace morvek;

namespace {

/*! An application that is told \a updates, one at a time. */
int runUpdated(int updates, Pace *pace)
{
    NetworkInterfaceService *service = readyNetworkInterfaceService();
    int told = 0;
    QObject::connect(service, &NetworkInterfaceService::interfaceConfigurationChanged, service, [&] {
        pace->begin();
        pace->end();
        if (++told == updates)
            QCoreApplication::quit();
    });
    pace->setReady();
    const int result = QCoreApplication::exec();
    deleteNetworkInterfaceService(&service);
    return result;
}

/*! An application that sends a request with three addresses for each line "1", and does nothing for others. */
int runRequesting(Pace *pace)
{
    NetworkInterfaceService *service = readyNetworkInterfaceService();
    const ManualRequests requests(service);
    std::unique_ptr<AsyncNetworkInterfaceOperation> operation;
    onLines(service, [&](const QByteArray &line) {
        operation.reset(); // the last one, whose end is not counted
        pace->begin();
        if (line != "1") {
            pace->end();
            return;
        }
        operation.reset(requests.next());
        QObject::connect(operation.get(), &AsyncNetworkInterfaceOperation::success, [pace] { pace->end(); });
    });
    pace->setReady();
    const int result = QCoreApplication::exec();
    deleteNetworkInterfaceService(&service);
    return result;
}

int runStart(int interfaces)
{
    markCounted();
    NetworkInterfaceService *service = newNetworkInterfaceService();
    markCounted();
    if (service->interfaces().size() != interfaces)
        qFatal("the service knows %d interfaces", int(service->interfaces().size()));
    deleteNetworkInterfaceService(&service);
    return 0;
}

int descriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size();
}

/*! Tells how many a service takes: others may have been inherited. */
int runDescriptors()
{
    const int before = descriptors();
    NetworkInterfaceService *service = readyNetworkInterfaceService();
    std::cout << descriptors() - before << std::endl;
    deleteNetworkInterfaceService(&service);
    return 0;
}

int runScan(int accessPoints)
{
    WifiService *service = readyWifiService();
    await(service->scan()); // what happens only once
    AsyncWifiScanOperation *operation = service->scan();
    QObject::connect(operation, &AsyncWifiScanOperation::success, [operation, accessPoints] {
        markCounted();
        if (operation->results().size() != accessPoints)
            qFatal("a scan found %d access points", int(operation->results().size()));
    });
    markCounted();
    await(operation);
    deleteWifiService(&service);
    return 0;
}

int runParse(int accessPoints)
{
    const QByteArray text = scanResults(accessPoints);
    QJsonDocument::fromJson(text); // what happens only once
    markCounted();
    const QJsonDocument parsed = QJsonDocument::fromJson(text);
    markCounted();
    return parsed.array().size() == accessPoints ? 0 : 1;
}

constexpr int Endless = 1000000;
const QString Folder = QStringLiteral("/bench/objects/");
const QString Beside = QStringLiteral("beside");
const QString Opened = QStringLiteral("opened");

qint64 fileSize(const QString &path)
{
    return QFileInfo(QFile::decodeName(qgetenv("ZOP_ROOT")) + path).size();
}

/*! Makes an object of three attributes, and updates it so often. */
std::unique_ptr<ZopObject> makeObject(const QString &name)
{
    ZopChangeset values;
    for (const char *attribute : {"link_address", "mtu", "up"})
        values.assignments.insert(QLatin1String(attribute), QStringLiteral("0"));
    if (!ZopObject::create(Folder + name, values))
        qFatal("cannot make an object");
    return std::make_unique<ZopObject>(Folder + name, ZopObject::ReadWrite, false);
}

/*! Updates \a object until its file is replaced by a smaller one, or so often, and returns how often. */
int fill(ZopObject *object, const QString &name, int atMost)
{
    ZopChangeset changes;
    int updates = 0;
    for (qint64 size = 0, next = fileSize(Folder + name); updates < atMost && next >= size; ++updates) {
        size = next;
        changes.assignments.insert(QStringLiteral("mtu"), QString::number(1000 + updates % 1000));
        if (!object->setAttributes(changes))
            qFatal("cannot update: %s", qPrintable(object->errorString()));
        next = fileSize(Folder + name);
    }
    return updates;
}

/*! Makes an empty object, or a full one, whose file would be replaced with the next update. */
int runFilling(bool isFull)
{
    const int updates = fill(makeObject(Beside).get(), Beside, Endless) - 1;
    fill(makeObject(Opened).get(), Opened, isFull ? updates : 0);
    return 0;
}

/*! Opens it while the folder is watched already, and prints how long that took, in microseconds. */
int runOpening()
{
    const ZopObject beside(Folder + Beside, ZopObject::Subscribe, false);
    markCounted();
    QElapsedTimer timer;
    timer.start();
    ZopObject object(Folder + Opened, ZopObject::Subscribe, false);
    object.setAttributeCacheEnabled(true);
    const double microseconds = double(timer.nsecsElapsed()) / 1000;
    markCounted();
    if (object.attribute(QStringLiteral("link_address"), ZopVariant()).toString() != QLatin1String("0"))
        qFatal("an object was not read");
    std::cout << microseconds << std::endl;
    return 0;
}

} // namespace

int runCountedRole(const QStringList &arguments)
{
    const QString role = arguments.value(0);
    const int count = arguments.value(1).toInt();
    if (role == QLatin1String("counted-start"))
        return runStart(count);
    if (role == QLatin1String("counted-scan"))
        return runScan(count);
    if (role == QLatin1String("counted-parse"))
        return runParse(count);
    if (role == QLatin1String("opening"))
        return runOpening();
    if (role == QLatin1String("filling"))
        return runFilling(arguments.value(1) == QLatin1String("full"));
    if (role == QLatin1String("descriptors"))
        return runDescriptors();
    if (role != QLatin1String("updated") && role != QLatin1String("requesting"))
        return -1;
    Pace pace(arguments.value(2));
    return role == QLatin1String("updated") ? runUpdated(count, &pace) : runRequesting(&pace);
}
