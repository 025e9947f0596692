// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTS_CHANGETEXT_H
#define MORVEK_TESTS_CHANGETEXT_H

#include "zopchangeset.h"

/*! The update that \a text stands for: "a=1 b=2 -c" sets a and b, and removes c; "5000*x" is a run of x. */
morvek::ZopChangeset changesFrom(const QString &text);

/*! A value as it is written above. */
QString toText(const morvek::ZopVariant &value);
/*! An update as "{a=1 b=2 -c}", names in ascending order. */
QString toText(const morvek::ZopChangeset &changes);

#endif
