// SPDX-License-Identifier: Apache-2.0
#ifndef NETWORKINGDAEMON_H
#define NETWORKINGDAEMON_H

#include "attributevalue.h"
#include "zopdouble.h"

/*! What the networking daemon publishes, played by the double. */
namespace NetworkingDaemon {

const char *const Interfaces = "/zop/services/networking/all/interfaces";
const char *const Status = "/zop/services/networking/all/status_public";
const char *const Control = "/zop/services/networking/control";

inline QString interfaces()
{
    return QLatin1String(Interfaces);
}

inline QString interfacePath(const QString &name)
{
    return interfaces() + QLatin1Char('/') + name;
}

/*! The status and control objects, without which no provider is ready. */
inline void start()
{
    ZopDouble::store(QLatin1String(Status), {});
    ZopDouble::store(QLatin1String(Control), {});
}

/*! A wired interface that is connected with the address 10.0.0.5 from DHCP. */
inline ZopDouble::Values wired()
{
    return {
        {QStringLiteral("ip_addresses"), json(R"(["10.0.0.5/255.0.0.0"])")},
        {QStringLiteral("manual"), text("")},
        {QStringLiteral("ip_gateway"), json(R"(["10.0.0.1"])")},
        {QStringLiteral("link_address"), text("02:00:00:00:00:01")},
        {QStringLiteral("mtu"), morvek::ZopVariant(1500)},
        {QStringLiteral("type"), text("wired")},
        {QStringLiteral("up"), text("true")},
        {QStringLiteral("connected"), text("true")},
        {QStringLiteral("parent_interface"), text("")},
    };
}

/*! \a values with \a name set to \a value. */
inline ZopDouble::Values with(ZopDouble::Values values, const char *name, const morvek::ZopVariant &value)
{
    values.insert(QLatin1String(name), value);
    return values;
}

/*! A wired interface that is not connected. */
inline ZopDouble::Values unplugged()
{
    return with(with(wired(), "connected", text("false")), "ip_addresses", json("[]"));
}

/*! An interface that stands on \a parent. */
inline ZopDouble::Values standingOn(const char *parent)
{
    return with(wired(), "parent_interface", text(parent));
}

inline void addInterface(const char *name, const ZopDouble::Values &values)
{
    ZopDouble::add(interfaces(), QLatin1String(name), values);
}

inline void removeInterface(const char *name)
{
    ZopDouble::remove(interfaces(), QLatin1String(name));
}

/*! One update of one attribute of an interface. */
inline void change(const char *name, const char *attribute, const morvek::ZopVariant &value)
{
    ZopDouble::publish(interfacePath(QLatin1String(name)), {{QLatin1String(attribute), value}});
}

/*! The loss of an interface's addresses, as the daemon reports it. */
inline void releaseAddresses(const char *name)
{
    change(name, "ip_addresses", json("[]"));
}

/*! One update of one attribute of the status object. */
inline void changeStatus(const char *attribute, const morvek::ZopVariant &value)
{
    ZopDouble::publish(QLatin1String(Status), {{QLatin1String(attribute), value}});
}

} // namespace NetworkingDaemon

#endif
