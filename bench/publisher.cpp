// SPDX-License-Identifier: Apache-2.0
#include "publisher.h"

#include "pace.h"
#include "process.h"

#include <QtCore/QCoreApplication>

#include <iostream>

using namespace morvek;

namespace {

QString interfacePath(int number)
{
    return QStringLiteral("/zop/services/networking/all/interfaces/if%1").arg(number, 4, 10, QLatin1Char('0'));
}

ZopChangeset interfaceValues(int number, bool isVirtual)
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
    if (isVirtual)
        values.assignments.insert(QStringLiteral("parent_interface"), QStringLiteral("if0000"));
    return values;
}

} // namespace

Publisher::Publisher(int count, bool areVirtual, Pace *pace)
    : m_pace(pace)
{
    for (int number = 0; number < count; ++number)
        ZopObject::create(interfacePath(number), interfaceValues(number, areVirtual && number > 0));
    ZopChangeset status;
    status.assignments.insert(QStringLiteral("default_interface"), QStringLiteral("if0000"));
    ZopObject::create(QStringLiteral("/zop/services/networking/all/status_public"), status);
    m_first = std::make_unique<ZopObject>(interfacePath(0), ZopObject::Publish, false);
    m_control =
        std::make_unique<ZopObject>(QStringLiteral("/zop/services/networking/control"), ZopObject::Publish, true);
    connect(m_control.get(), &ZopObject::attributesChanged, this, &Publisher::reply);
}

void Publisher::update(int attributes)
{
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("mtu"), ++m_updates);
    if (attributes > 1) {
        changes.assignments.insert(QStringLiteral("link_address"), QStringLiteral("02:00:00:00:00:01"));
        changes.assignments.insert(QStringLiteral("up"), QStringLiteral("true"));
    }
    if (!m_first->setAttributes(changes))
        qFatal("cannot update: %s", qPrintable(m_first->errorString()));
}

void Publisher::reply(const ZopChangeset &request)
{
    if (m_pace) {
        m_pace->begin();
        m_pace->awaitLeave();
    }
    ZopChangeset reply;
    reply.assignments = {
        {QStringLiteral("res"), request.assignments.value(QStringLiteral("msg"))},
        {QStringLiteral("id"), request.assignments.value(QStringLiteral("id"))},
        {QStringLiteral("peer"), request.assignments.value(QStringLiteral("peer"))},
    };
    m_control->setAttributes(reply);
    if (m_pace)
        m_pace->end();
}

int runPublisher(const QStringList &arguments)
{
    const auto pace = arguments.size() > 2 ? std::make_unique<Pace>(arguments.value(2)) : nullptr;
    Publisher publisher(arguments.value(0).toInt(), arguments.value(1) == QLatin1String("virtual"), pace.get());
    onLines(&publisher, [&](const QByteArray &line) {
        const int attributes = line.toInt();
        if (pace)
            pace->begin();
        if (attributes > 0)
            publisher.update(attributes);
        if (pace)
            pace->end();
    });
    if (pace)
        pace->setReady();
    std::cout << "ready" << std::endl;
    return QCoreApplication::exec();
}
