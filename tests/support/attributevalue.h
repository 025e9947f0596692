// SPDX-License-Identifier: Apache-2.0
#ifndef ATTRIBUTEVALUE_H
#define ATTRIBUTEVALUE_H

#include "zopvariant.h"

inline morvek::ZopVariant text(const char *value)
{
    return morvek::ZopVariant(QString::fromUtf8(value));
}

/*! A JSON value, written out. */
inline morvek::ZopVariant json(const QByteArray &value)
{
    return morvek::ZopVariant(value, "json");
}

/*! Text of any bytes. */
inline morvek::ZopVariant raw(const QByteArray &value)
{
    return morvek::ZopVariant(value, "text");
}

#endif
