// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_ROOTLOCK_H
#define MORVEK_HOSTD_ROOTLOCK_H

#include "filedescriptor.h"
#include "service.h"

#include <QtCore/QString>
#include <QtCore/QVector>

namespace morvek {

/*!
 * The right to publish services below a root, held for each service by one morvek-hostd at a time: locks on bytes of
 * a hidden file of the root, which the kernel releases however the holder ends.
 */
class RootLock
{
public:
    enum Result { Taken, Unusable, Held };

    RootLock() = default;

    /*! Takes the root that the environment names for \a services, and creates it when there is none. */
    Result take(const QVector<Service> &services, QString *error);
    /*! The same again for these services, when the root is not the one any more that was taken. */
    Result keep(QString *error);
    QString root() const { return m_root; }

private:
    Q_DISABLE_COPY(RootLock)
    bool isTaken() const;
    Result lock(const FileDescriptor &file, QString *error) const;

    QVector<Service> m_services;
    QString m_root;
    QByteArray m_path;
    FileDescriptor m_file;
};

} // namespace morvek

#endif
