// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_FOLDERLOCK_H
#define MORVEK_FOLDERLOCK_H

#include "filedescriptor.h"

#include <QtCore/QString>

namespace morvek {

class ZopPath;

/*! Keeps other processes from creating objects in a folder, which it creates if need be; unless another one does. */
class FolderLock
{
public:
    FolderLock(const ZopPath &path, QString *error);

    bool isHeld() const { return m_folder.isOpen(); }

private:
    FileDescriptor m_folder;
};

} // namespace morvek

#endif
