// SPDX-License-Identifier: Apache-2.0
#include "patience.h"
#include "storms.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <cerrno>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uid_t Nobody = 65534;

/*! Permissions of the root, of its folders and of its files go, and come back. */
class PermissionStorm : public Storm
{
public:
    ~PermissionStorm() override
    {
        // What was taken away when the storm failed; the folder may be in one where only root may remove it.
        giveBack();
        if (m_wasRoot)
            (void)!seteuid(0);
    }

    QString prepare() override
    {
        if (geteuid() != 0)
            return QString();
        // They do not hinder root. What is started has no way back.
        const QByteArray folder = QFile::encodeName(Storm::place());
        if (chown(folder.constData(), Nobody, Nobody) != 0 || setgroups(0, nullptr) != 0
            || setresgid(Nobody, Nobody, Nobody) != 0 || setresuid(Nobody, Nobody, 0) != 0)
            return QStringLiteral("this user cannot become an ordinary one");
        m_wasRoot = true;
        return access(STORM_APPLICATION, X_OK) == 0 ? QString()
                                                    : QStringLiteral("an ordinary user cannot run what was built here");
    }

protected:
    void rage(int rounds) override
    {
        startDaemons();
        for (int i = 0; i < 2; ++i)
            startApplication();
        for (int round = 0; round < rounds; ++round) {
            keepBusy();
            letPass(random(100));
            const QString target = chance(3) ? root() : anyEntry();
            takeAway(target);
            letPass(50 + random(300));
            if (chance(3)) {
                kill(&m_daemons);
                count("daemons killed");
            }
            expectLife();
            giveBack();
            if (!m_daemons)
                startDaemons();
            expectAgreement();
        }
    }

private:
    QString anyEntry()
    {
        const QString entry = anyBelow(root(), QDir::Files | QDir::Dirs | QDir::System | QDir::Hidden);
        demand(!entry.isEmpty(), QStringLiteral("nothing is published"));
        return entry;
    }

    void takeAway(const QString &path)
    {
        const mode_t modes[] = {0, 0200, 0400, 0100};
        const mode_t left = modes[random(4)];
        m_path = QFile::encodeName(path);
        struct stat status;
        if (stat(m_path.constData(), &status) != 0) {
            m_path.clear();
            demand(path.contains(QLatin1String("/.")), path + QStringLiteral(" is gone")); // hidden ones come and go
            return;
        }
        m_mode = status.st_mode & 07777;
        if (chmod(m_path.constData(), left) != 0)
            demand(errno == ENOENT, path + QStringLiteral(" keeps its permissions"));
        count(S_ISDIR(status.st_mode) ? "folders closed" : "files closed");
    }

    void giveBack()
    {
        // A file may have been replaced meanwhile, with permissions of its own.
        chmod(m_path.constData(), m_mode);
    }

    QByteArray m_path;
    mode_t m_mode = 0;
    bool m_wasRoot = false;
};

} // namespace

std::unique_ptr<Storm> makePermissionStorm()
{
    return std::make_unique<PermissionStorm>();
}
