// SPDX-License-Identifier: Apache-2.0
#ifndef TEXTLINES_H
#define TEXTLINES_H

#include <QtCore/QStringList>

#include <initializer_list>

/*! \a texts in UTF-8. */
inline QStringList lines(std::initializer_list<const char *> texts)
{
    QStringList list;
    for (const char *text : texts)
        list.append(QString::fromUtf8(text));
    return list;
}

#endif
