// SPDX-License-Identifier: Apache-2.0
#include "namespaces.h"
#include "patience.h"
#include "storms.h"
#include "writers.h"
#include "zopobject.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <sys/mount.h>

using namespace morvek;

namespace {

/*! The root is on a small disk, which fills up under writers, daemons and applications. */
class DiskStorm : public WritingStorm
{
public:
    ~DiskStorm() override { umount2(QFile::encodeName(place()).constData(), MNT_DETACH); }

    QString prepare() override
    {
        const QString obstacle = enterMountNamespace();
        if (!obstacle.isEmpty())
            return obstacle;
        QDir().mkpath(place());
        const QByteArray folder = QFile::encodeName(place());
        return mount("storm", folder.constData(), "tmpfs", 0, "size=8m,mode=0700") == 0
            ? QString()
            : QStringLiteral("a small disk cannot be mounted");
    }

protected:
    QString place() final { return scratch("disk"); }

    void rage(int rounds) override
    {
        qputenv("KREL_VERBOSITY", "3");
        startDaemons({QStringLiteral("--verbose")});
        createObjects();
        for (int i = 0; i < 3; ++i)
            startReader();
        for (int i = 0; i < 3; ++i)
            startWriter(20000, 1000);
        for (int i = 0; i < 2; ++i)
            startApplication();
        expectLateNews();
        for (int round = 0; round < rounds; ++round) {
            keepBusy();
            letPass(100 + random(200));
            fill();
            fillObjects();
            letPass(300 + random(500));
            expectLife();
            if (chance(4)) {
                kill(&m_daemons);
                empty();
                startDaemons();
            }
            empty();
            expectAgreement();
            count("disks filled");
        }
        expectAllSeen();
        // An update that did not fit has left nothing behind.
        for (const Process &reader : m_readers)
            demand(!reader->errors().contains("malformed"),
                   reader->name() + QStringLiteral(" says: ") + QString::fromLocal8Bit(reader->errors().left(1000)));
    }

private:
    void fill()
    {
        QFile filler(place() + QStringLiteral("/filler"));
        demand(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered), QStringLiteral("there is no disk to fill"));
        // To the last byte, again and again, as files of the root are replaced meanwhile.
        for (int i = 0; i < 20; ++i) {
            for (int size = 65536; size > 0;) {
                const qint64 written = filler.write(QByteArray(size, 'x'));
                count("bytes of filling", qMax<qint64>(written, 0));
                if (written < size)
                    size /= 2;
            }
            letPass(5);
        }
    }

    /*! What the daemons could not publish is published when there is room, though nobody asks for anything any more. */
    void expectLateNews()
    {
        const Process application = m_applications.front();
        const auto tells = [&application](const char *text) {
            return application->ask(QStringLiteral("view"), QStringLiteral("view ")).contains(QLatin1String(text));
        };
        demand(waitUntil([&] { return tells("powered yes connected yes"); }),
               QStringLiteral("the station is not connected"));
        fill();
        fillObjects();
        application->ask(QStringLiteral("rest"), QStringLiteral("rest"));
        // What is answered last was asked last.
        demand(waitUntil([this] { return m_daemons->errors().contains("reply   scan "); }),
               QStringLiteral("nobody was asked to leave the network"));
        demand(m_daemons->errors().contains("cannot publish \"/zop/services/wifi/status\""),
               QStringLiteral("the disk is not full"));
        demand(tells("powered yes connected yes"), QStringLiteral("what was not published is told"));
        empty();
        demand(waitUntil([&] { return tells("powered yes connected no"); }),
               QStringLiteral("what met a full disk was never published"));
    }

    /*! The daemons' files have room left in what they occupy. */
    void fillObjects()
    {
        for (const char *name : {"networking/all/status_public", "wifi/status", "tethering/status"}) {
            ZopObject object(QStringLiteral("/zop/services/") + QLatin1String(name), ZopObject::ReadWrite, false);
            ZopChangeset changes;
            changes.assignments.insert(QStringLiteral("s"), ZopVariant(1));
            while (object.setAttributes(changes))
                count("updates that still fitted");
        }
    }

    void empty() { QFile::remove(place() + QStringLiteral("/filler")); }
};

} // namespace

std::unique_ptr<Storm> makeDiskStorm()
{
    return std::make_unique<DiskStorm>();
}
