// SPDX-License-Identifier: Apache-2.0
#include "namespaces.h"
#include "patience.h"
#include "storms.h"
#include "writers.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <sys/mount.h>

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
        startDaemons();
        createObjects();
        for (int i = 0; i < 3; ++i)
            startReader();
        for (int i = 0; i < 3; ++i)
            startWriter(20000, 1000);
        for (int i = 0; i < 2; ++i)
            startApplication();
        for (int round = 0; round < rounds; ++round) {
            for (const Process &application : m_applications)
                application->send(QStringLiteral("busy 5 %1").arg(random(1000000)));
            letPass(100 + random(200));
            fill();
            letPass(300 + random(500));
            expectLife();
            if (chance(2)) {
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

    void empty() { QFile::remove(place() + QStringLiteral("/filler")); }
};

} // namespace

std::unique_ptr<Storm> makeDiskStorm()
{
    return std::make_unique<DiskStorm>();
}
