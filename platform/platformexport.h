// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PLATFORMEXPORT_H
#define MORVEK_PLATFORMEXPORT_H

#include <QtCore/qglobal.h>

#ifdef MORVEK_PLATFORM_BUILD
#define MORVEK_PLATFORM_EXPORT Q_DECL_EXPORT
#else
#define MORVEK_PLATFORM_EXPORT Q_DECL_IMPORT
#endif

#endif
