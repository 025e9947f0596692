// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_HOTSPOTAPPLICATION_H
#define MORVEK_TEST_HOTSPOTAPPLICATION_H

#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "hotspotservice.h"
#include "networklibraryexports.h"
#include "servicepointer.h"
#include "watched.h"

// An application that uses the hotspot service.

using Fetch = Watched<morvek::AsyncHotspotConfigOperation>;
using Update = Watched<morvek::AsyncHotspotConfigOperation>;
using Switch = Watched<morvek::AsyncHotspotEnableOperation>;
using Application = HotSpotServicePointer;

/*! One whose service is ready, unless the test has failed. */
inline Application hotspotApplication()
{
    Application service(newHotSpotService());
    if (!service->ready())
        QSignalSpy(service.get(), &morvek::ServiceBase::readyChanged).wait(Patience);
    return service;
}

#endif
