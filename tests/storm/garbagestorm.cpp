// SPDX-License-Identifier: Apache-2.0
#include "journalbytes.h"
#include "patience.h"
#include "processusage.h"
#include "storms.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int RoundsBeforeRepair = 8;
constexpr qint64 MiB = 1024 * 1024;
// An application, the state of its objects, and what reading a file may take.
constexpr qint64 LargestProcess = 160 * MiB;

const char *const Attributes[][2] = {
    {"networking/all/interfaces/eth0", "type"},
    {"networking/all/interfaces/eth0", "up"},
    {"networking/all/interfaces/eth0", "connected"},
    {"networking/all/interfaces/eth0", "link_address"},
    {"networking/all/interfaces/eth0", "mtu"},
    {"networking/all/interfaces/eth0", "manual"},
    {"networking/all/interfaces/eth0", "ip_addresses"},
    {"networking/all/interfaces/eth0", "ip_gateway"},
    {"networking/all/interfaces/eth0.5", "parent_interface"},
    {"networking/all/interfaces/eth0", "parent_interface"},
    {"networking/all/status_public", "default_interface"},
    {"networking/all/status_public", "priority"},
    {"wifi/status", "wifi_power"},
    {"wifi/status", "wifi_status"},
    {"wifi/status", "scan_results"},
    {"wifi/status", "last_event"},
    {"tethering/status", "state"},
    {"tethering/control", "msg"},
    {"wifi/control", "dat"},
    {"networking/control", "msg"},
};

/*! Whatever is in the root becomes garbage, or changes into something that does not belong there. */
class GarbageStorm : public Storm
{
protected:
    void rage(int rounds) override
    {
        qputenv("KREL_VERBOSITY", "3");
        startDaemons();
        m_writer = start(StormProcess::Peer, QStringLiteral("writer"));
        for (int i = 0; i < 2; ++i)
            startApplication();
        for (int round = 1; round <= rounds; ++round) {
            keepBusy();
            for (int i = 0; i < 20; ++i)
                spoilAttribute();
            spoilFile();
            letPass(random(60));
            expectLife();
            expectLittleMemory();
            if (round % RoundsBeforeRepair == 0 || round == rounds)
                repair();
        }
        expectReports();
    }

private:
    QByteArray noise(int size)
    {
        QByteArray bytes;
        while (bytes.size() < size)
            bytes.append(char(random(256)));
        return bytes;
    }

    QByteArray value()
    {
        switch (random(8)) {
        case 0:
            return QByteArray();
        case 1:
            return QByteArray(random(200000), '[');
        case 2:
            return "{\"bssid\":[{\"ssid\":" + QByteArray::number(random(1000)) + "}],\"ssid\":7,\"key_mgmt\":{}}";
        case 3:
            return QByteArray::number(qint64(random(1000000)) * 100000000000LL);
        case 4:
            return QByteArray(random(100000), 'x');
        case 5:
            return "[\"" + noise(20).toHex() + "\",null,{\"flags\":[1,null,\"WPA2\"]},[[]],\"eth0\"]";
        case 6:
            return QByteArray("\0\xff\xc0\x80\xed\xa0\x80", 7) + noise(10);
        default:
            return noise(random(2000));
        }
    }

    void spoilAttribute()
    {
        const auto &one = Attributes[random(int(std::size(Attributes)))];
        m_writer->send(QStringLiteral("set /zop/services/%1 %2 %3")
                           .arg(QLatin1String(one[0]), QLatin1String(one[1]), QString::fromLatin1(value().toBase64())));
        count("attributes spoilt");
    }

    void spoilFile()
    {
        const QString file = anyBelow(root() + QStringLiteral("/zop"), QDir::Files | QDir::System | QDir::Hidden);
        if (file.isEmpty())
            return;
        struct stat status;
        if (lstat(QFile::encodeName(file).constData(), &status) != 0)
            return;
        if (S_ISREG(status.st_mode) && !chance(5))
            damage(file);
        else
            replace(file);
        count("files spoilt");
    }

    void damage(const QString &name)
    {
        QFile file(name);
        if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered) || file.size() == 0)
            return;
        const int size = int(qMin<qint64>(file.size(), 1 << 30));
        switch (random(9)) {
        case 0:
            file.resize(random(size));
            break;
        case 1:
            file.seek(random(size));
            file.write(noise(1 + random(64)));
            break;
        case 2:
            file.seek(random(size));
            file.write(QByteArray(1 + random(200), '\0'));
            break;
        case 3:
            file.seek(random(size));
            file.write(QByteArray(16, '\xff')); // a length beyond any bound, if it hits one
            break;
        case 4:
            // Behind a valid header.
            file.resize(qMin(size, 48));
            file.seek(file.size());
            file.write(noise(random(5000)));
            break;
        case 5:
            file.seek(size);
            file.write(noise(random(300)));
            break;
        case 6:
            file.resize(file.size() + random(3000) * MiB); // which takes no disk
            break;
        case 7:
            file.seek(file.size());
            file.write(QByteArray(int(random(20) * MiB), 'x'));
            break;
        default:
            writeClaims(&file);
        }
    }

    /*! Beginnings of records, each of which claims the bytes of those that follow. */
    void writeClaims(QFile *file)
    {
        file->seek(8);
        const QByteArray marker = file->read(8);
        const QByteArray claim = marker + JournalBytes::recordHeader(1, quint32(1 + random(16)) << 20, 0).mid(8);
        file->seek(file->size());
        file->write(claim.repeated(random(100000)));
    }

    /*! Whatever stands in a file, reading it takes so much and no more. */
    void expectLittleMemory()
    {
        QVector<Process> processes = {m_daemons};
        for (const Process &application : m_applications)
            processes << application;
        for (const Process &process : qAsConst(processes)) {
            const qint64 peak = peakMemory(process->processId());
            demand(peak > 0 && (peak < LargestProcess || hasSanitizers()),
                   QStringLiteral("%1 has had %2 MiB of memory").arg(process->name()).arg(peak / MiB));
        }
    }

    void replace(const QString &name)
    {
        QFile::remove(name);
        const QByteArray path = QFile::encodeName(name);
        switch (random(5)) {
        case 0:
            mkdir(path.constData(), 0700);
            break;
        case 1:
            QFile::link(root(), name);
            break;
        case 2:
            mkfifo(path.constData(), 0600);
            break;
        case 3: {
            QFile file(name);
            file.open(QIODevice::WriteOnly);
            file.write(noise(random(500)));
            break;
        }
        default:
            break; // it is just gone
        }
    }

    /*! The daemons publish everything anew. */
    void repair()
    {
        const QString set = m_writer->ask(QStringLiteral("ping end"), QStringLiteral("pong end"));
        demand(!set.isNull(), QStringLiteral("the writer does not answer"));
        kill(&m_daemons);
        demand(QDir(root() + QStringLiteral("/zop")).removeRecursively(), QStringLiteral("the objects stay"));
        startDaemons();
        expectLife();
        expectAgreement();
        count("times published anew");
    }

    QByteArray reportsOf(const Process &process) const
    {
        QByteArray reports;
        const QList<QByteArray> lines = process->errors().split('\n');
        for (const QByteArray &line : lines)
            reports += line.contains("malformed") ? line + '\n' : QByteArray();
        return reports;
    }

    /*! What was malformed was told, with its path. */
    void expectReports()
    {
        QByteArray all;
        for (const Process &application : m_applications)
            all += reportsOf(application);
        const QList<QByteArray> lines = all.split('\n');
        for (const QByteArray &line : lines)
            demand(line.isEmpty() || line.contains(QFile::encodeName(root())) || line.contains("connection"),
                   QStringLiteral("a report without a path: ") + QString::fromLocal8Bit(line));
        demand(lines.size() > 1, QStringLiteral("nobody has told of malformed content"));
        count("reports of malformed content", lines.size() - 1);
    }

    Process m_writer;
};

} // namespace

std::unique_ptr<Storm> makeGarbageStorm()
{
    return std::make_unique<GarbageStorm>();
}
