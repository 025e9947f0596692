// SPDX-License-Identifier: Apache-2.0
#ifndef STORMS_H
#define STORMS_H

#include "storm.h"

struct StormEntry
{
    const char *name;
    const char *description;
    int rounds; //!< of a short run
    std::unique_ptr<Storm> (*make)();
};

/*! All storms. */
const std::vector<StormEntry> &storms();

std::unique_ptr<Storm> makeControlStorm();
std::unique_ptr<Storm> makeDescriptorStorm();
std::unique_ptr<Storm> makeDiskStorm();
std::unique_ptr<Storm> makeFloodStorm();
std::unique_ptr<Storm> makeGarbageStorm();
std::unique_ptr<Storm> makeKillStorm();
std::unique_ptr<Storm> makeLockStorm();
std::unique_ptr<Storm> makePermissionStorm();
std::unique_ptr<Storm> makeRootStorm();
std::unique_ptr<Storm> makeSoakStorm();
std::unique_ptr<Storm> makeStallStorm();
std::unique_ptr<Storm> makeWatchStorm();
std::unique_ptr<Storm> makeWriterStorm();

#endif
