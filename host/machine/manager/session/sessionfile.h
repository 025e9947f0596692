// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SESSIONFILE_H
#define MORVEK_HOSTD_SESSIONFILE_H

#include "privatefile.h"
#include "service.h"
#include "sessionnotes.h"

#include <QtCore/QVector>

namespace morvek {

/*! Where the notes of a run are kept: a file of the root, one for each that serves other services below it. */
class SessionFile
{
public:
    SessionFile() = default;
    /*! Only while \a served are served by nobody else below \a root. */
    SessionFile(const QString &root, const QVector<Service> &served);

    QString path() const { return m_file.path(); }
    /*!
     * The notes of runs that have served one of the services, and have ended before they could give everything back;
     * \a unread gets the files that cannot be read, and why.
     */
    SessionNotes takeUp(QStringList *unread);
    /*! Has it say what \a notes do. */
    bool write(const SessionNotes &notes, QString *error);

private:
    QString m_folder;
    QVector<Service> m_served;
    PrivateFile m_file;
};

} // namespace morvek

#endif
