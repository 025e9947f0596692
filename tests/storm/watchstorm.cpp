// SPDX-License-Identifier: Apache-2.0
#include "namespaces.h"
#include "patience.h"
#include "storms.h"
#include "zopobject.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

using morvek::ZopObject;

namespace {

const char *const Limits[] = {"/proc/sys/user/max_inotify_watches", "/proc/sys/user/max_inotify_instances"};

bool setLimit(const char *file, int number)
{
    QFile limit(QString::fromLatin1(file));
    return limit.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && limit.write(QByteArray::number(number)) > 0;
}

/*! No folder can be watched any more, while folders come and go. */
class WatchStorm : public Storm
{
public:
    QString prepare() override
    {
        const QString obstacle = enterUserNamespace();
        if (!obstacle.isEmpty())
            return obstacle;
        return setLimit(Limits[0], Usual) ? QString() : QStringLiteral("limits cannot be set here");
    }

protected:
    void rage(int rounds) override
    {
        startDaemons();
        for (int i = 0; i < 2; ++i)
            startApplication();
        expectAgreement();
        for (int round = 0; round < rounds * 2; ++round) {
            const char *const limit = Limits[round % 2];
            demand(setLimit(limit, 0), QStringLiteral("no limit"));
            count(round % 2 ? "times without instances" : "times without watches");
            startApplication(); // which cannot watch anything yet
            kill(&m_daemons);
            demand(QDir(root() + QStringLiteral("/zop")).removeRecursively(), QStringLiteral("the objects stay"));
            letPass(random(100));
            makeFolders();
            letPass(100 + random(300));
            expectLife();
            demand(setLimit(limit, Usual), QStringLiteral("no limit"));
            startDaemons(); // which finds all folders there already
            expectLife();
            expectAgreement();
        }
    }

private:
    static constexpr int Usual = 100000;

    void makeFolders()
    {
        for (const char *service : {"networking/all/interfaces", "wifi", "tethering"}) {
            QString error;
            const QString object = QStringLiteral("/zop/services/%1/passing").arg(QLatin1String(service));
            demand(ZopObject::create(object, {}, &error) && ZopObject::remove(object, &error), error);
        }
    }
};

} // namespace

std::unique_ptr<Storm> makeWatchStorm()
{
    return std::make_unique<WatchStorm>();
}
