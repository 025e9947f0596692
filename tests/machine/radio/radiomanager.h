// SPDX-License-Identifier: Apache-2.0
#ifndef RADIOMANAGER_H
#define RADIOMANAGER_H

#include "realmanager.h"

/*! The guest's network manager and supplicant, for the radio wlan0 and the cable up0. */
class RadioManager
{
public:
    ~RadioManager();

    /*! Starts both, with the user's profile Cable, and waits until that is connected; else the test fails. */
    void start();

private:
    RealManager m_manager {{QStringLiteral("wlan0"), QStringLiteral("up0")}};
    ChildProcess m_supplicant;
};

#endif
