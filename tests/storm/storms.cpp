// SPDX-License-Identifier: Apache-2.0
#include "storms.h"

const std::vector<StormEntry> &storms()
{
    static const std::vector<StormEntry> all = {
        {"control", "a control object's daemon is killed and flooded under numbered requests", 12, makeControlStorm},
        {"descriptors", "applications and daemons run out of file descriptors", 2, makeDescriptorStorm},
        {"disk", "the disk below the root fills up", 2, makeDiskStorm},
        {"flood", "objects are flooded with updates", 1, makeFloodStorm},
        {"garbage", "garbage in every file and every attribute", 25, makeGarbageStorm},
        {"kill", "daemons and applications are killed and started anew", 15, makeKillStorm},
        {"locks", "stopped processes hold the locks of objects and folders", 6, makeLockStorm},
        {"permissions", "files and folders lose their permissions", 6, makePermissionStorm},
        {"roots", "the root and what is below it is removed and exchanged", 6, makeRootStorm},
        {"soak", "a lively world for long: memory and descriptors stay flat", 6, makeSoakStorm},
        {"stall", "daemons and applications are stopped for a while", 6, makeStallStorm},
        {"watches", "the kernel's watches run out", 2, makeWatchStorm},
        {"writers", "eight writers, some of them killed, against eight readers", 2, makeWriterStorm},
    };
    return all;
}
