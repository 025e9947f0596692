// SPDX-License-Identifier: Apache-2.0
#ifndef LIVELYWORLD_H
#define LIVELYWORLD_H

#include <QtCore/QString>

#include <random>

/*!
 * Writes a scenario to \a file in which something happens each \a step milliseconds, for \a length of them: interfaces
 * come and go, links and networks are lost, the hotspot is switched. At the end everything is as it was.
 */
bool writeLivelyWorld(const QString &file, int length, int step, std::mt19937 *random);

#endif
