// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_OWNGROUP_H
#define MORVEK_OWNGROUP_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <sys/types.h>

namespace morvek {

/*! Who else may do what a group may do, as far as the system's accounts and groups tell. */
namespace OwnGroup {

struct Account
{
    QByteArray name;
    uid_t user;
    gid_t group;
};

struct Group
{
    QByteArray name;
    gid_t id;
    QVector<QByteArray> members;
};

/*! Why \a group is not the own one of \a user among all \a accounts; empty when it is nobody else's. */
QString objection(const Group &group, uid_t user, const QVector<Account> &accounts);

/*! The same of the group \a group of this machine and the user who runs this; what cannot be looked up is an objection.
 */
QString objection(gid_t group);

} // namespace OwnGroup

} // namespace morvek

#endif
