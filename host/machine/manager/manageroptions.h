// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_MANAGEROPTIONS_H
#define MORVEK_HOSTD_MANAGEROPTIONS_H

#include <QtCore/QStringList>

namespace morvek {

/*! What may be done with the machine's network manager. */
struct ManagerOptions
{
    QStringList only;      //!< the interfaces that are shown and may be touched; empty: all
    bool force = false;    //!< touches the interface that carries the user's remote session, too
    bool remember = false; //!< keeps the networks that applications join, with their passkeys
};

} // namespace morvek

#endif
