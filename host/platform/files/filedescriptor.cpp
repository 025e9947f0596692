// SPDX-License-Identifier: Apache-2.0
#include "filedescriptor.h"

#include <QtCore/QVarLengthArray>

#include <algorithm>

#include <poll.h>
#include <sys/resource.h>

namespace morvek {

bool FileDescriptor::areToSpare(int count)
{
    const FileDescriptor one(openat(AT_FDCWD, "/", O_PATH | O_CLOEXEC));
    return one.isOpen() && (count <= 1 || areToSpare(count - 1));
}

bool FileDescriptor::areLastFree(int count)
{
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit); // each time, as it may be lowered
    QVarLengthArray<pollfd, 8> last;
    for (int i = 1; i <= count; ++i)
        last.append({int(limit.rlim_cur) - i, 0, 0});
    poll(last.data(), nfds_t(count), 0);
    // A negative number, of a limit that is too small or none, is not told as free.
    return std::all_of(last.cbegin(), last.cend(), [](const pollfd &number) { return number.revents == POLLNVAL; });
}

} // namespace morvek
