// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFINETWORKORDER_P_H
#define MORVEK_WIFINETWORKORDER_P_H

#include <QtCore/QVector>

namespace morvek {

/*!
 * The order of networks: a list that somebody reads stays, as far as what is strong can still be found.
 *
 * Levels are in dBm; one that is 0 is not known, and weaker than all.
 */
namespace WifiNetworkOrder {

/*! Whether a network of \a level comes before one of \a other when both are new. */
bool isStronger(int level, int other);

/*!
 * In which order the networks come that had these \a levels, top down: each has passed those directly above it that
 * it is stronger than by at least 6 dB. Applied again, this changes nothing.
 */
QVector<int> settled(const QVector<int> &levels);

/*!
 * Which rows stay when each row goes to its one of \a places: as many as can, so that the fewest others are moved.
 */
QVector<bool> staying(const QVector<int> &places);

} // namespace WifiNetworkOrder

} // namespace morvek

#endif
