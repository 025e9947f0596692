// SPDX-License-Identifier: Apache-2.0
#include "patience.h"
#include "storms.h"
#include "writers.h"

#include <QtCore/QFile>
#include <QtCore/QtEndian>

namespace {

constexpr int Writers = 8;
constexpr int Readers = 8;
constexpr int LargestValue = 3000;

/*! Eight write to the same objects, and some of them die in the middle of it; eight read. */
class WriterStorm : public WritingStorm
{
protected:
    void rage(int rounds) override
    {
        createObjects();
        for (int i = 0; i < Readers; ++i)
            startReader();
        for (int i = 0; i < Writers; ++i)
            startWriter(20000, LargestValue);
        for (int kills = 0; kills < rounds * 10; ++kills) {
            letPass(20 + random(150));
            killWriter();
            startWriter(20000, LargestValue);
        }
        expectLife();
        const QStringList all = paths();
        for (const QString &path : all)
            demand(waitUntil([&] { return generation(path) > 1; }), path + QStringLiteral(" has never been replaced"));
        expectAllSeen();
        for (const QString &path : all)
            count("generations of files", generation(path));
    }

private:
    qint64 generation(const QString &path)
    {
        QFile file(root() + path);
        demand(file.open(QIODevice::ReadOnly) && file.seek(24), path + QStringLiteral(" cannot be read"));
        return qFromUnaligned<qint64>(file.read(8).constData());
    }
};

} // namespace

std::unique_ptr<Storm> makeWriterStorm()
{
    return std::make_unique<WriterStorm>();
}
