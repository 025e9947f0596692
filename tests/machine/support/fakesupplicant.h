// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_FAKESUPPLICANT_H
#define MORVEK_TEST_FAKESUPPLICANT_H

#include "busobjects.h"

/*! The supplicant that serves the access point on wlan0, and tells how many have joined it: nobody, at first. */
class FakeSupplicant : public BusObjects
{
    Q_OBJECT

public:
    FakeSupplicant();

    /*! \a signal is the one that says so: "StaAuthorized", "StaDeauthorized". */
    void setStations(int count, const QString &signal);
};

#endif
