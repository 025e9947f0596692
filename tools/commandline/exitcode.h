// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_EXITCODE_H
#define MORVEK_EXITCODE_H

namespace morvek {

/*! What morvekctl ends with; scripts rely on these values. */
enum ExitCode {
    Done = 0,
    Failed = 1,
    WrongUsage = 2,
    NotReady = 3,
    TimedOut = 4,
    NotFound = 5,
};

} // namespace morvek

#endif
