// SPDX-License-Identifier: Apache-2.0
#include "folderlock.h"

#include "lockwait.h"
#include "zoppath.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>

namespace morvek {

FolderLock::FolderLock(const ZopPath &path, QString *error)
{
    if (!path.makeFolder(error))
        return;
    m_folder = path.folderPlace().open(O_RDONLY | O_DIRECTORY);
    if (!m_folder.isOpen())
        *error = systemError(errno);
    else if (!waitForLock(
                 path.folder(), [this] { return flock(m_folder.get(), LOCK_EX | LOCK_NB); }, error))
        m_folder.reset();
}

} // namespace morvek
