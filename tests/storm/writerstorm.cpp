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
        expectAllSeen();
        for (int object = 0; object < Objects; ++object)
            count("generations of files", generation(paths()[object]));
    }

private:
    qint64 generation(const QString &path)
    {
        QFile file(root() + path);
        demand(file.open(QIODevice::ReadOnly) && file.seek(24), path + QStringLiteral(" cannot be read"));
        const qint64 number = qFromUnaligned<qint64>(file.read(8).constData());
        demand(number > 1, path + QStringLiteral(" has never been replaced"));
        return number;
    }
};

} // namespace

std::unique_ptr<Storm> makeWriterStorm()
{
    return std::make_unique<WriterStorm>();
}
