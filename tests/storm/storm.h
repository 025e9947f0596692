// SPDX-License-Identifier: Apache-2.0
#ifndef STORM_H
#define STORM_H

#include "stormprocess.h"

#include <QtCore/QDir>
#include <QtCore/QMap>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <random>
#include <vector>

/*!
 * One kind of trouble, thrown at real processes from a seed; what it has done and seen is counted. The first thing that
 * is wrong ends it.
 */
class Storm
{
public:
    struct Wrong
    {
        QString text;
    };

    Storm();
    virtual ~Storm();

    /*!
     * What needs to be done while the process has one thread and no children: namespaces, another user. Why the storm
     * cannot be had here; empty when it can.
     */
    virtual QString prepare() { return QString(); }
    /*! Throws \a rounds rounds. */
    void run(quint32 seed, int rounds);

    /*! What was counted, on one line. */
    QString counts() const;

protected:
    virtual void rage(int rounds) = 0;
    /*! Where the root is. */
    virtual QString place() { return m_folder.path(); }

    std::mt19937 &generator() { return m_random; }
    int random(int below) { return int(m_random() % uint(below)); }
    bool chance(int inSoMany) { return random(inSoMany) == 0; }
    void count(const char *what, qint64 number = 1) { m_counts[QLatin1String(what)] += number; }
    /*! Ends the storm when \a isSo is false. */
    static void demand(bool isSo, const QString &otherwise);

    QString root() { return place() + QStringLiteral("/root"); }
    /*! Any entry of the kinds \a kinds below \a folder; empty when there is none. */
    QString anyBelow(const QString &folder, QDir::Filters kinds);
    QString scratch(const char *name) const { return m_folder.filePath(QLatin1String(name)); }

    using Process = std::shared_ptr<StormProcess>;
    Process start(StormProcess::Kind kind, const QString &name, const QStringList &arguments = {}, int speed = 1);
    void startDaemons(const QStringList &arguments = {}, int speed = 20);
    /*! Lets every application make a request each 5 ms, from a seed of its own. */
    void keepBusy();
    /*! SIGKILL, and \a process is forgotten. */
    void kill(Process *process);
    /*! The same in peace. */
    void end(Process *process);
    /*! \a process ends by itself with \a code, and is forgotten. */
    void expectEnd(Process *process, int code);
    Process startApplication();

    /*! Every process lives, answers, and has nothing to complain of. */
    void expectLife();
    /*! Every application tells the same as one that is started now, and what it asked for has ended. */
    void expectAgreement();
    /*! Ends every process in peace. */
    void endAll();

private:
    QTemporaryDir m_folder; // outlives the processes that use it

protected:
    Process m_daemons;
    std::vector<Process> m_applications;

private:
    void forget(Process *process);
    void checkTroubles();
    void expectSingleEnds() const;
    bool agree(QString *difference);

    std::mt19937 m_random;
    QMap<QString, qint64> m_counts;
    std::vector<Process> m_processes;
    int m_names = 0;
};

#endif
