// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_JSON_H
#define MORVEK_TEST_JSON_H

#include <QtCore/QByteArray>

/*! Single quotes stand for double ones. */
inline QByteArray json(const char *text)
{
    return QByteArray(text).replace('\'', '"');
}

#endif
