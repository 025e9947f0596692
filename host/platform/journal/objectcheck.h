// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_OBJECTCHECK_H
#define MORVEK_OBJECTCHECK_H

#include "journalfile.h"

#include <sys/stat.h>

namespace morvek {

/*!
 * Judges from time to time whether a file is still that of the object which was published, and sound: whoever starts to
 * read it then knows what others know. Records are judged once; that they are still the same, a sum tells.
 */
class ObjectCheck
{
public:
    enum Result {
        Sound,
        Torn, //!< killed writers have left beginnings of records, or so it seems
        Unsound
    };

    /*! Whether the file is as it was when it was judged to be sound: one system call tells. */
    bool isUnchanged(const ZopPath &path) const;
    /*! Unsound with the reason. The first sound file is that of the object, of which \a writer is alive. */
    Result judge(const ZopPath &path, quint64 writer, QString *error);
    /*! Of the object; 0 before it is known. */
    quint64 incarnation() const { return m_identity.incarnation; }

private:
    /*! How far a file has been judged, and what was found. */
    struct Progress
    {
        qint64 end = 0;  // behind the last sound record
        quint32 sum = 0; // of all bytes before it
    };

    bool isSuccessor(const Journal::Header &header, const struct stat &present) const;
    static Result judgeContent(const ZopPath &path, const FileDescriptor &file, const Journal::Header &header,
                               quint64 writer, Progress *progress);

    Journal::Identity m_identity;
    quint64 m_marker = 0;
    struct stat m_last = {};
    Progress m_progress;
    bool m_isSettled = false;
};

} // namespace morvek

#endif
