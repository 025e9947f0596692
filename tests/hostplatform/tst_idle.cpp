// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "wakeups.h"

#include <QtCore/QTimer>

#include <memory>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

using namespace morvek;

namespace {

/*! What becomes of an object's file. */
bool turnInto(const QString &kind, const QString &path)
{
    const QByteArray file = QFile::encodeName(fileOf(path));
    if (kind == QLatin1String("object"))
        return true;
    if (!QFile::remove(fileOf(path)))
        return false;
    if (kind == QLatin1String("garbage"))
        return plant(path, "no object");
    if (kind == QLatin1String("pipe"))
        return mkfifo(file.constData(), 0600) == 0;
    if (kind == QLatin1String("folder"))
        return mkdir(file.constData(), 0700) == 0;
    return kind != QLatin1String("link") || symlink("/dev/zero", file.constData()) == 0;
}

} // namespace

/*! Nothing wakes up an application that follows objects as long as nothing happens to them, whatever they are. */
class IdleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anIdleApplicationDoesNotWake();
};

void IdleTest::anIdleApplicationDoesNotWake()
{
    std::vector<std::unique_ptr<ZopObject>> objects;
    ZopDirWatcher watcher(testFolder());
    watcher.setNameCacheEnabled(true);
    const Events events(&watcher);
    for (const char *kind : {"object", "nothing", "garbage", "pipe", "folder", "link"}) {
        const QString path = testPath(kind);
        QVERIFY(publish(path, QStringLiteral("a=1")));
        objects.push_back(std::make_unique<ZopObject>(path, ZopObject::Subscribe, false));
        objects.back()->setAttributeCacheEnabled(true);
        QVERIFY2(turnInto(QLatin1String(kind), path), kind);
    }
    QVERIFY(publish(testPath("last"), QString()));
    QVERIFY(events.wait(QStringLiteral("+last")));

    QTimer end;
    end.setSingleShot(true);
    end.start(1000);
    int wakeUps = 0;
    countWakeUps([&](int count) {
        wakeUps = count;
        return !end.isActive();
    });
    // Its own, for which the loop may go to sleep once more.
    QVERIFY2(wakeUps <= 3, qPrintable(QString::number(wakeUps)));
}

CONTRACT_TEST_MAIN(IdleTest)

#include "tst_idle.moc"
