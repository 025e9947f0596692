// SPDX-License-Identifier: Apache-2.0
#include "owngroup.h"

#include "zoppath.h"

#include <QtCore/QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <mutex>

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace morvek {

namespace {

// Beyond it nobody is told apart: the list is read each time that something is opened below such a folder.
constexpr int MostAccounts = 10000;
constexpr size_t LargestEntry = 1024 * 1024;

QString shown(const QByteArray &name)
{
    return QLatin1Char('"') + QString::fromUtf8(name) + QLatin1Char('"');
}

/*! Calls \a read with a growing buffer until its entry has room there; the number of the error, or 0. */
template<typename Read>
int withBuffer(const Read &read)
{
    QByteArray buffer(1024, Qt::Uninitialized);
    int error = 0;
    while ((error = read(buffer.data(), size_t(buffer.size()))) == ERANGE && size_t(buffer.size()) < LargestEntry)
        buffer.resize(2 * buffer.size());
    return error;
}

bool lookUp(gid_t id, OwnGroup::Group *group, QString *error)
{
    bool isFound = false;
    const int problem = withBuffer([&](char *buffer, size_t size) {
        struct group entry = {};
        struct group *found = nullptr;
        const int result = getgrgid_r(id, &entry, buffer, size, &found);
        isFound = result == 0 && found;
        if (isFound) {
            *group = {found->gr_name, id, {}};
            for (char **member = found->gr_mem; *member; ++member)
                group->members.append(*member);
        }
        return result;
    });
    if (!isFound)
        *error = problem ? systemError(problem) : QStringLiteral("there is no such group");
    return isFound;
}

bool listAccounts(QVector<OwnGroup::Account> *accounts, QString *error)
{
    static std::mutex mutex; // the list has one reader at a time
    const std::lock_guard<std::mutex> lock(mutex);
    int problem = 0;
    setpwent();
    while (problem == 0 && accounts->size() <= MostAccounts) {
        problem = withBuffer([accounts](char *buffer, size_t size) {
            passwd entry = {};
            passwd *found = nullptr;
            const int result = getpwent_r(&entry, buffer, size, &found);
            if (result == 0)
                accounts->append({found->pw_name, found->pw_uid, found->pw_gid});
            return result;
        });
    }
    endpwent();
    if (problem == 0)
        *error = QStringLiteral("there are more than %1 accounts").arg(MostAccounts);
    else if (problem != ENOENT) // which is the end
        *error = systemError(problem);
    return problem == ENOENT;
}

} // namespace

QString OwnGroup::objection(const Group &group, uid_t user, const QVector<Account> &accounts)
{
    const QString name = shown(group.name);
    const auto own =
        std::find_if(accounts.begin(), accounts.end(), [user](const Account &account) { return account.user == user; });
    if (own == accounts.end())
        return QStringLiteral("where the group %1 may write, and there is no account of user %2").arg(name).arg(user);
    if (own->group != group.id)
        return QStringLiteral("where the group %1 may write, which is not the primary one of %2")
            .arg(name, shown(own->name));
    if (own->name != group.name)
        return QStringLiteral("where the group %1 may write, which does not bear the name of %2")
            .arg(name, shown(own->name));
    QVector<QByteArray> others = group.members;
    for (const Account &account : accounts) {
        if (account.group == group.id)
            others.append(account.name);
    }
    others.removeAll(own->name);
    return others.isEmpty()
        ? QString()
        : QStringLiteral("where the group %1 may write, which %2 has, too").arg(name, shown(others.first()));
}

QString OwnGroup::objection(gid_t group)
{
    Group entry;
    QVector<Account> accounts;
    QString error;
    if (lookUp(group, &entry, &error) && listAccounts(&accounts, &error))
        return objection(entry, geteuid(), accounts);
    return QStringLiteral("where the group %1 may write, which cannot be looked up: %2").arg(group).arg(error);
}

} // namespace morvek
