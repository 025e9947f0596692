// SPDX-License-Identifier: Apache-2.0
#ifndef LIVELYWORLD_H
#define LIVELYWORLD_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <random>

/*!
 * Writes a scenario to \a file in which something happens each \a step milliseconds: interfaces come and go, links and
 * networks are lost, the hotspot is switched. It has times of such \a lengths, with a pause before each; at the end of
 * each everything is as it was.
 */
bool writeLivelyWorld(const QString &file, const QVector<int> &lengths, int pause, int step, std::mt19937 *random);

#endif
