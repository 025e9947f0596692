// SPDX-License-Identifier: Apache-2.0
#include "folderlock.h"

#include "zoppath.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>

namespace morvek {

FolderLock::FolderLock(const ZopPath &path, QString *error)
{
    if (!path.makeFolder(error))
        return;
    m_folder.reset(open(path.folder().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    while (m_folder.isOpen() && flock(m_folder.get(), LOCK_EX) != 0 && errno == EINTR) { }
    if (!m_folder.isOpen())
        *error = systemError(errno);
}

} // namespace morvek
