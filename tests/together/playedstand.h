// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_PLAYEDSTAND_H
#define MORVEK_TEST_PLAYEDSTAND_H

#include "stand.h"

/*! The scenario headunit, twenty times as fast. */
class PlayedStand : public Stand
{
public:
    PlayedStand();

    bool start(DaemonFixture *daemon) override;
};

#endif
