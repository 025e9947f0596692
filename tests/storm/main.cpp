// SPDX-License-Identifier: Apache-2.0
#include "storms.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr int Skipped = 77; // what CTest takes for it
constexpr quint32 UsualSeed = 20240229;

const StormEntry *find(const char *name)
{
    const auto found = std::find_if(storms().begin(), storms().end(),
                                    [name](const StormEntry &one) { return std::strcmp(one.name, name) == 0; });
    return found == storms().end() ? nullptr : &*found;
}

void list()
{
    for (const StormEntry &one : storms())
        std::printf("%-12s %s (%d)\n", one.name, one.description, one.rounds);
}

int fly(const StormEntry &entry, std::unique_ptr<Storm> storm, quint32 seed, int rounds)
{
    std::printf("storm %s, seed %u, rounds %d\n", entry.name, seed, rounds);
    std::fflush(stdout);
    QElapsedTimer time;
    time.start();
    try {
        storm->run(seed, rounds);
    } catch (const Storm::Wrong &wrong) {
        std::printf("storm %s FAILED with seed %u, after: %s\n%s\n", entry.name, seed, qPrintable(storm->counts()),
                    qPrintable(wrong.text));
        return 1;
    }
    std::printf("storm %s passed in %lld s: %s\n", entry.name, time.elapsed() / 1000, qPrintable(storm->counts()));
    return 0;
}

} // namespace

/*! Throws one storm: namespaces and users cannot be undone, so that each has a process of its own. */
int main(int argc, char **argv)
{
    const StormEntry *entry = argc > 1 ? find(argv[1]) : nullptr;
    std::unique_ptr<Storm> storm;
    if (entry) {
        // Before anything has made a thread.
        const QString obstacle = (storm = entry->make())->prepare();
        if (!obstacle.isEmpty()) {
            std::printf("storm %s SKIPPED: %s\n", entry->name, qPrintable(obstacle));
            return Skipped;
        }
    }
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Throws a storm at the platform, the daemons and applications."));
    parser.addPositionalArgument(QStringLiteral("storm"),
                                 QStringLiteral("Which one; comes first. Without it: all are listed."));
    parser.addOptions({{QStringLiteral("seed"), QStringLiteral("What chance follows from."), QStringLiteral("N")},
                       {QStringLiteral("rounds"), QStringLiteral("How long it rages."), QStringLiteral("N")}});
    parser.addHelpOption();
    parser.process(application);
    if (!entry) {
        list();
        return parser.positionalArguments().isEmpty() ? 0 : 2;
    }
    const quint32 seed =
        parser.isSet(QStringLiteral("seed")) ? parser.value(QStringLiteral("seed")).toUInt() : UsualSeed;
    const int rounds =
        parser.isSet(QStringLiteral("rounds")) ? parser.value(QStringLiteral("rounds")).toInt() : entry->rounds;
    return fly(*entry, std::move(storm), seed, rounds);
}
