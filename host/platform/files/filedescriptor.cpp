// SPDX-License-Identifier: Apache-2.0
#include "filedescriptor.h"

#include <QtCore/QVarLengthArray>

#include <algorithm>
#include <climits>

#include <poll.h>
#include <sys/resource.h>

namespace morvek {

bool FileDescriptor::areToSpare(int count)
{
    const FileDescriptor one(open("/", O_PATH | O_CLOEXEC));
    return one.isOpen() && (count <= 1 || areToSpare(count - 1));
}

bool FileDescriptor::areLastFree(int count)
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur < rlim_t(count) || limit.rlim_cur > INT_MAX)
        return false;
    QVarLengthArray<pollfd, 8> last;
    for (int i = 1; i <= count; ++i)
        last.append({int(limit.rlim_cur) - i, 0, 0});
    const auto isFree = [](const pollfd &number) { return number.revents == POLLNVAL; };
    return poll(last.data(), nfds_t(count), 0) == count && std::all_of(last.cbegin(), last.cend(), isFree);
}

} // namespace morvek
