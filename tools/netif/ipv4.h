// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_IPV4_H
#define MORVEK_IPV4_H

#include <networkinterfaceconfig.h>

namespace morvek {

/*! What was typed for a manual configuration; empty for what was not. */
struct ManualAddress
{
    QString address; //!< may have the length of the prefix behind a slash
    QString netmask;
    QString prefix;
    QString gateway;
};

/*!
 * Builds the configuration that \a typed stands for. False, with a sentence for the user in \a error, when a part
 * is missing or wrong, or when they do not fit together.
 */
bool manualConfiguration(const ManualAddress &typed, NetworkInterfaceConfig *config, QString *error);

} // namespace morvek

#endif
