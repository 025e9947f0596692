// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_INTERFACECOMMAND_H
#define MORVEK_INTERFACECOMMAND_H

#include "servicecommand.h"

#include <networkinterface.h>
#include <networkinterfaceservice.h>
#include <networklibraryexports.h>

namespace morvek {

/*! The name of an interface, completed from those that are there. */
Word interfaceWord();

/*! A command that needs the network interface service. */
class InterfaceCommand
    : public CommandWith<NetworkInterfaceService, newNetworkInterfaceService, deleteNetworkInterfaceService>
{
    Q_OBJECT

public:
    explicit InterfaceCommand(const CommandLine &line);

protected:
    /*! Looks \a name up. Ends the command, with a complaint, and returns false when there is none. */
    bool find(const QString &name, NetworkInterface *networkInterface);
};

} // namespace morvek

#endif
