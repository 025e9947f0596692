// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_BUSCALL_H
#define MORVEK_TEST_BUSCALL_H

#include <QtCore/QMetaType>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusObjectPath>

/*! The groups of settings of a profile. */
using BusSettings = QMap<QString, QVariantMap>;
using BusPaths = QList<QDBusObjectPath>;

/*! A call that has come, also one that sets a property: its member is "Set". */
struct BusCall
{
    QString sender;
    QString path;
    QString interface;
    QString member;
    /*! Of the types that Qt has for them: BusPaths, BusSettings, QList<QVariantMap>, QByteArray... */
    QVariantList arguments;

    QString text(int argument) const;
    QString pathAt(int argument) const { return qvariant_cast<QDBusObjectPath>(arguments.value(argument)).path(); }
    BusSettings settings(int argument) const { return qvariant_cast<BusSettings>(arguments.value(argument)); }
    QVariantMap map(int argument) const { return qvariant_cast<QVariantMap>(arguments.value(argument)); }
};
Q_DECLARE_METATYPE(BusCall)

/*! Its answer: values, or the name and the text of an error. */
struct BusAnswer
{
    QVariantList values;
    QString error;
    QString text;
};

#endif
