// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKEXPORT_H
#define MORVEK_NETWORKEXPORT_H

#include <QtCore/qglobal.h>

#ifdef MORVEK_NETWORK_BUILD
#define MORVEK_NETWORK_EXPORT Q_DECL_EXPORT
#else
#define MORVEK_NETWORK_EXPORT Q_DECL_IMPORT
#endif

#endif
