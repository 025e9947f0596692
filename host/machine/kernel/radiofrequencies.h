// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_RADIOFREQUENCIES_H
#define MORVEK_HOSTD_RADIOFREQUENCIES_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace morvek {

/*! Where the kernel lets a radio be an access point, by the rules of the country that it takes itself to be in. */
namespace RadioFrequencies {

/*! In MHz; none when the kernel does not tell. Those on which radar has to be looked for are left out. */
QVector<quint32> read(const QString &interface);

/*! Those in one message of the kernel's about a radio. */
QVector<quint32> readMessage(const QByteArray &attributes);

} // namespace RadioFrequencies

} // namespace morvek

#endif
