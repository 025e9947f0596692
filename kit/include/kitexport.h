// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_KITEXPORT_H
#define MORVEK_KITEXPORT_H

#include <QtCore/qglobal.h>

#ifdef MORVEK_KIT_BUILD
#define MORVEK_KIT_EXPORT Q_DECL_EXPORT
#else
#define MORVEK_KIT_EXPORT Q_DECL_IMPORT
#endif

#endif
