// SPDX-License-Identifier: Apache-2.0
#include "interfacecommand.h"

#include "output.h"
#include "publishednames.h"
#include "texts.h"

namespace morvek {

namespace {

QStringList interfaceNames(const NetworkInterfaceService &service)
{
    QStringList names;
    const QList<NetworkInterface> interfaces = service.interfaces();
    for (const NetworkInterface &networkInterface : interfaces)
        names += networkInterface.name();
    return names;
}

} // namespace

Word interfaceWord()
{
    return {QStringLiteral("NAME"), [](const QStringList &) { return PublishedNames::interfaces(); }};
}

// This service is ready at once, or never.
InterfaceCommand::InterfaceCommand(const CommandLine &line)
    : CommandWith(line, QStringLiteral("networking"), 0)
{
}

bool InterfaceCommand::find(const QString &name, NetworkInterface *networkInterface)
{
    const QList<NetworkInterface> interfaces = service()->interfaces();
    for (const NetworkInterface &candidate : interfaces) {
        if (candidate.name() == name) {
            *networkInterface = candidate;
            return true;
        }
    }
    const QString known = shortList(interfaceNames(*service()));
    complain(QStringLiteral("there is no interface \"%1\": %2")
                 .arg(name,
                      known.isEmpty() ? QStringLiteral("there is none at all at the moment")
                                      : QStringLiteral("use one of %1").arg(known)));
    finish(NotFound);
    return false;
}

} // namespace morvek
