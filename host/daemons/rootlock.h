// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_ROOTLOCK_H
#define MORVEK_HOSTD_ROOTLOCK_H

#include <QtCore/QString>

namespace morvek {

/*!
 * The right to publish below a root, held by one morvek-hostd at a time: a lock on a hidden file of the root, which
 * the kernel releases however the holder ends.
 */
class RootLock
{
public:
    enum Result { Taken, Unusable, Held };

    RootLock() = default;
    ~RootLock();

    /*! Takes the root that the environment names, and creates it when there is none. */
    Result take(QString *error);
    QString root() const { return m_root; }

private:
    Q_DISABLE_COPY(RootLock)
    QString m_root;
    int m_file = -1;
};

} // namespace morvek

#endif
