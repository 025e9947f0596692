// SPDX-License-Identifier: Apache-2.0
#include "publisher.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSocketNotifier>

#include <iostream>

#include <unistd.h>

using namespace morvek;

namespace {

QString interfacePath(int number)
{
    return QStringLiteral("/zop/services/networking/all/interfaces/if%1").arg(number, 4, 10, QLatin1Char('0'));
}

ZopChangeset interfaceValues(int number)
{
    ZopChangeset values;
    values.assignments = {
        {QStringLiteral("ip_addresses"), QJsonArray {QStringLiteral("10.0.0.5/255.0.0.0")}},
        {QStringLiteral("ip_gateway"), QJsonArray {QStringLiteral("10.0.0.1")}},
        {QStringLiteral("manual"), QStringLiteral("auto")},
        {QStringLiteral("link_address"),
         QStringLiteral("02:00:00:00:00:%1").arg(number % 100, 2, 10, QLatin1Char('0'))},
        {QStringLiteral("mtu"), 1500},
        {QStringLiteral("type"), QStringLiteral("wired")},
        {QStringLiteral("up"), QStringLiteral("true")},
        {QStringLiteral("connected"), QStringLiteral("false")},
    };
    return values;
}

} // namespace

Publisher::Publisher(int count)
{
    for (int number = 0; number < count; ++number)
        ZopObject::create(interfacePath(number), interfaceValues(number));
    ZopChangeset status;
    status.assignments.insert(QStringLiteral("default_interface"), QStringLiteral("if0000"));
    ZopObject::create(QStringLiteral("/zop/services/networking/all/status_public"), status);
    m_first = std::make_unique<ZopObject>(interfacePath(0), ZopObject::Publish, false);
    m_control =
        std::make_unique<ZopObject>(QStringLiteral("/zop/services/networking/control"), ZopObject::Publish, true);
    connect(m_control.get(), &ZopObject::attributesChanged, this, &Publisher::reply);
}

void Publisher::update()
{
    ZopChangeset changes;
    changes.assignments = {
        {QStringLiteral("mtu"), ++m_updates},
        {QStringLiteral("link_address"), QStringLiteral("02:00:00:00:00:01")},
        {QStringLiteral("up"), QStringLiteral("true")},
    };
    if (!m_first->setAttributes(changes))
        qFatal("cannot update: %s", qPrintable(m_first->errorString()));
}

void Publisher::reply(const ZopChangeset &request)
{
    ZopChangeset reply;
    reply.assignments = {
        {QStringLiteral("res"), request.assignments.value(QStringLiteral("msg"))},
        {QStringLiteral("id"), request.assignments.value(QStringLiteral("id"))},
        {QStringLiteral("peer"), request.assignments.value(QStringLiteral("peer"))},
    };
    m_control->setAttributes(reply);
}

int runPublisher(int count)
{
    Publisher publisher(count);
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &publisher, [&publisher] {
        char line[64];
        if (read(STDIN_FILENO, line, sizeof(line)) <= 0)
            QCoreApplication::quit();
        else
            publisher.update();
    });
    std::cout << "ready" << std::endl;
    return QCoreApplication::exec();
}
