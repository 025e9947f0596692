// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_MANAGEDSTAND_H
#define MORVEK_TEST_MANAGEDSTAND_H

#include "stand.h"

/*! Daemons over a network manager. */
class ManagedStand : public Stand
{
public:
    bool start(DaemonFixture *daemon) override;

protected:
    /*! Has the manager in the state that is described. */
    virtual bool prepare() = 0;
};

#endif
