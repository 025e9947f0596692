// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOSTDEXITCODE_H
#define MORVEK_HOSTD_HOSTDEXITCODE_H

namespace morvek {

/*! What the program ends with. */
enum class HostdExitCode {
    Success = 0,
    CannotPublish = 1, //!< an object could not be created, or the kernel does not tell its interfaces
    BadArguments = 2,
    BadScenario = 3,
    UnusableRoot = 4,
    AlreadyRunning = 5, //!< another morvek-hostd holds the root
    NotDone = 6,        //!< the running one has refused what was to be played or looked at
    NotRunning = 7,     //!< there is none that answers
    NoManager = 8,      //!< --network manager, and there is none that can be used
    NothingToServe = 9, //!< and no daemon is left, as there is no such interface, or no radio
};

} // namespace morvek

#endif
