// SPDX-License-Identifier: Apache-2.0
#ifndef METAOBJECT_H
#define METAOBJECT_H

#include <QtCore/QMetaMethod>
#include <QtCore/QStringList>

#include <cstring>

/*! The methods that a class adds to its base, in order, each with its kind. */
inline QStringList ownMethods(const QMetaObject &metaObject)
{
    QStringList methods;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i) {
        const QMetaMethod method = metaObject.method(i);
        const char *kind = method.methodType() == QMetaMethod::Signal ? "signal "
            : method.methodType() == QMetaMethod::Slot                ? "slot "
                                                                      : "method ";
        methods.append(QLatin1String(kind) + QString::fromLatin1(method.methodSignature()));
    }
    return methods;
}

/*!
 * Where a virtual operation stands in its class's table, as the pointer to it says on the platforms that are built
 * for: one less than an odd offset, or the offset itself.
 */
template<typename Function>
quintptr virtualPosition(Function function)
{
    quintptr words[2];
    static_assert(sizeof words == sizeof function, "A pointer to a member function is two words");
    std::memcpy(words, &function, sizeof words);
    return words[0] / sizeof(void *);
}

#endif
