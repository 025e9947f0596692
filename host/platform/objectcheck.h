// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_OBJECTCHECK_H
#define MORVEK_OBJECTCHECK_H

#include "journalfile.h"

#include <sys/stat.h>

namespace morvek {

/*!
 * Judges from time to time whether a file is still that of the object which was published, and sound: whoever starts to
 * read it then knows what others know. What has not changed since is not read again.
 */
class ObjectCheck
{
public:
    /*! False with the reason. The first file that passes is that of the object. */
    bool passes(const ZopPath &path, QString *error);
    /*! Of the object; 0 before it is known. */
    quint64 incarnation() const { return m_identity.incarnation; }

private:
    bool isUnchanged(const struct stat &present) const;
    bool isSuccessor(const Journal::Header &header, const struct stat &present) const;

    Journal::Identity m_identity;
    quint64 m_marker = 0;
    struct stat m_last = {};
    bool m_isSettled = false;
};

} // namespace morvek

#endif
