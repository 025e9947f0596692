// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTKITEXPORT_H
#define MORVEK_TESTKITEXPORT_H

#include <QtCore/qglobal.h>

#ifdef MORVEK_TEST_KIT_BUILD
#define MORVEK_TEST_KIT_EXPORT Q_DECL_EXPORT
#else
#define MORVEK_TEST_KIT_EXPORT Q_DECL_IMPORT
#endif

#endif
