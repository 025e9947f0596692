// SPDX-License-Identifier: Apache-2.0
#include "storm.h"

#include "patience.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFile>

#include <algorithm>

namespace {

const char *const AllReady = "ready yes yes yes ";

} // namespace

Storm::Storm() = default;

Storm::~Storm() = default;

void Storm::run(quint32 seed, int rounds)
{
    m_random.seed(seed);
    qputenv("ZOP_ROOT", QFile::encodeName(root()));
    try {
        rage(rounds);
        checkTroubles();
        expectSingleEnds();
        endAll();
    } catch (...) {
        // A crash is the better explanation of whatever else went wrong.
        for (const Process &process : m_processes) {
            process->signal(SIGCONT);
            const QString trouble = process->trouble();
            if (!trouble.isEmpty())
                qWarning("%s", qPrintable(trouble));
            process->kill(); // before its root is removed
        }
        throw;
    }
}

void Storm::keepBusy()
{
    for (const Process &application : m_applications)
        application->send(QStringLiteral("busy 5 %1").arg(random(1000000)));
}

QString Storm::anyBelow(const QString &folder, QDir::Filters kinds)
{
    QStringList entries;
    QDirIterator it(folder, kinds | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext())
        entries << it.next();
    entries.sort(); // so that a seed is the same storm everywhere
    return entries.isEmpty() ? QString() : entries[random(entries.size())];
}

QString Storm::counts() const
{
    QStringList texts;
    for (auto it = m_counts.begin(); it != m_counts.end(); ++it)
        texts << QStringLiteral("%1 %2").arg(it.value()).arg(it.key());
    return texts.join(QStringLiteral(", "));
}

void Storm::demand(bool isSo, const QString &otherwise)
{
    if (!isSo)
        throw Wrong {otherwise};
}

Storm::Process Storm::start(StormProcess::Kind kind, const QString &name, const QStringList &arguments, int speed)
{
    auto process = std::make_shared<StormProcess>(kind, QStringLiteral("%1 %2").arg(name).arg(++m_names), root());
    process->start(arguments, speed);
    m_processes.push_back(process);
    return process;
}

void Storm::startDaemons(const QStringList &arguments, int speed)
{
    m_daemons = start(StormProcess::Daemons, QStringLiteral("morvek-hostd"), arguments, speed);
    demand(!m_daemons->wait(QStringLiteral("ready")).isNull(),
           QStringLiteral("morvek-hostd does not start: ") + QString::fromLocal8Bit(m_daemons->errors()));
}

void Storm::kill(Process *process)
{
    const QString trouble = (*process)->trouble();
    demand(trouble.isEmpty(), trouble);
    (*process)->kill();
    const QString late = (*process)->trouble();
    demand(late.isEmpty(), late);
    forget(process);
}

void Storm::end(Process *process)
{
    demand((*process)->end(),
           QStringLiteral("%1 does not end as it should: %2")
               .arg((*process)->name(), QString::fromLocal8Bit((*process)->errors().right(3000))));
    forget(process);
}

void Storm::expectEnd(Process *process, int code)
{
    demand((*process)->endsAlone(code),
           QStringLiteral("%1 does not end with %2: %3")
               .arg((*process)->name())
               .arg(code)
               .arg(QString::fromLocal8Bit((*process)->errors().right(3000))));
    forget(process);
}

void Storm::forget(Process *process)
{
    m_processes.erase(std::find(m_processes.begin(), m_processes.end(), *process));
    process->reset();
}

Storm::Process Storm::startApplication()
{
    m_applications.push_back(start(StormProcess::Application, QStringLiteral("application")));
    return m_applications.back();
}

void Storm::expectLife()
{
    for (const Process &process : m_processes) {
        if (process != m_daemons)
            demand(process->answers(), process->name() + QStringLiteral(" does not answer"));
    }
    checkTroubles();
}

void Storm::checkTroubles()
{
    for (const Process &process : m_processes) {
        const QString trouble = process->trouble();
        demand(trouble.isEmpty(), trouble);
    }
}

void Storm::expectSingleEnds() const
{
    for (const Process &application : m_applications) {
        const QString open = application->ask(QStringLiteral("open"), QStringLiteral("open "));
        demand(open.section(QLatin1Char(' '), 3, 3) == QLatin1String("0"),
               QStringLiteral("%1 has operations that ended twice (waited for, started, ended, twice): %2")
                   .arg(application->name(), open));
    }
}

void Storm::expectAgreement()
{
    for (const Process &application : m_applications) {
        QString view;
        const bool ready = waitUntil([&] {
            view = application->ask(QStringLiteral("view"), QStringLiteral("view "));
            return view.startsWith(QLatin1String(AllReady));
        });
        demand(ready, QStringLiteral("%1 does not get ready: %2").arg(application->name(), view));
        QString open;
        const bool ended = waitUntil([&] {
            application->ask(QStringLiteral("rest"), QStringLiteral("rest"));
            letPass(100);
            open = application->ask(QStringLiteral("open"), QStringLiteral("open "));
            return open.startsWith(QLatin1String("0 "));
        });
        demand(ended,
               QStringLiteral("%1 waits for operations that do not end (waited for, started, ended, twice): %2")
                   .arg(application->name(), open));
        const QStringList numbers = open.split(QLatin1Char(' '));
        count("operations ended", numbers.value(2).toLongLong());
    }
    QString difference;
    const bool agreed = waitUntil([&] {
        // A request to join that was under way may have been carried out after the one to leave.
        for (const Process &application : m_applications)
            application->ask(QStringLiteral("rest"), QStringLiteral("rest"));
        letPass(200);
        return agree(&difference);
    });
    demand(agreed, difference);
    expectSingleEnds();
    count("views compared", qint64(m_applications.size()));
    checkTroubles();
}

bool Storm::agree(QString *difference)
{
    Process fresh = start(StormProcess::Application, QStringLiteral("observer"));
    const auto viewOf = [](const Process &process) {
        return process->ask(QStringLiteral("view"), QStringLiteral("view "));
    };
    QString expected;
    const bool isReady = waitUntil([&] { return (expected = viewOf(fresh)).startsWith(QLatin1String(AllReady)); });
    demand(isReady, QStringLiteral("a new application does not get ready: ") + expected);
    // Every application has switched the radio on and left its network, so that a lost update of that shows.
    bool isSame = expected.contains(QStringLiteral("/ powered yes connected no "));
    *difference = QStringLiteral("a new application tells of a radio at rest: ") + expected;
    for (const Process &application : m_applications) {
        const QString view = viewOf(application);
        if (view != expected) {
            isSame = false;
            *difference =
                QStringLiteral("%1 tells\n  %2\nand a new one\n  %3").arg(application->name(), view, expected);
        }
    }
    end(&fresh);
    return isSame;
}

void Storm::endAll()
{
    while (!m_processes.empty()) {
        Process last = m_processes.back();
        end(&last);
    }
    m_applications.clear();
    m_daemons.reset();
}
