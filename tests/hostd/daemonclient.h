// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_DAEMONCLIENT_H
#define MORVEK_TEST_DAEMONCLIENT_H

#include "hostdprocess.h"
#include "patience.h"
#include "zopcontrolcommand.h"
#include "zopobject.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QSignalSpy>

#include <memory>

const char Interfaces[] = "/zop/services/networking/all/interfaces";
const char Status[] = "/zop/services/networking/all/status_public";
const char Control[] = "/zop/services/networking/control";
const char TetheringStatus[] = "/zop/services/tethering/status";
const char TetheringControl[] = "/zop/services/tethering/control";
const char WifiStatus[] = "/zop/services/wifi/status";
const char WifiControl[] = "/zop/services/wifi/control";

QString interfacePath(const char *name);

/*! A state object as a client sees it. */
struct Seen
{
    explicit Seen(const QString &path);

    bool has(const char *name) const { return object.attribute(QLatin1String(name)).isValid(); }
    QString text(const char *name) const { return object.attribute(QLatin1String(name)).toString(); }
    morvek::ZopChangeset update(int i) const { return updates.at(i).at(0).value<morvek::ZopChangeset>(); }

    /*! One line for each update: NAME=TEXT for what is set, in name order, then -NAME for what is removed. */
    QStringList lines() const;

    morvek::ZopObject object;
    QSignalSpy updates; //!< since it was opened
};

/*! One request and its reply. Single quotes in its payload stand for double ones. */
struct Request
{
    Request(morvek::ZopObject *control, const char *message, const char *dat = nullptr);

    /*! "ok", or "CODE TEXT". */
    QString outcome();
    /*! The payload of the reply, as text. */
    QString answer() { return outcome() == QLatin1String("ok") ? command.datResponse().toString() : outcome(); }

    morvek::ZopControlCommand command;
    QSignalSpy finished;
};

/*! Everything that the files below \a root hold, and the command line and environment of \a process. */
QByteArrayList everythingReadable(const QString &root, qint64 process);

/*! A daemon on a root of its own, which the test's environment names too. */
class DaemonFixture
{
public:
    DaemonFixture();
    ~DaemonFixture();

    QString root() const { return m_folder.filePath(QStringLiteral("root")); }
    /*! Creates the root before the daemon does. */
    bool makeRoot() const;
    HostdProcess &process() { return *m_process; }
    /*! Kills the process, if it runs; the next start is another process. */
    void kill();

    /*! Starts with these arguments behind those of every daemon. */
    bool serve(const QStringList &arguments);
    bool start(const QString &scenario, const QStringList &arguments = {});
    /*! Starts with a scenario given as text; single quotes stand for double ones. */
    bool startWith(const char *scenario, const QStringList &arguments = {});

private:
    QTemporaryDir m_folder;
    std::unique_ptr<HostdProcess> m_process;
};

#endif
