// SPDX-License-Identifier: Apache-2.0
#include "changetext.h"
#include "krellogger.h"
#include "zopcontrolcommand.h"
#include "zopdirwatcher.h"
#include "zopobject.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QHash>
#include <QtCore/QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <string>

#include <sys/time.h>
#include <unistd.h>

/*
 * A process that the contract tests speak to: commands on standard input, what happens on standard output. NAME
 * is the test's choice and begins every line that has to do with it.
 *
 *   open NAME PATH MODE [flag]    "NAME open" or "NAME not open"; then what the object tells
 *   cache NAME                    "NAME cached" after what is told inside the call
 *   set NAME CHANGES              "NAME set" or "NAME not set"
 *   serve NAME PATH               "NAME open"; a control object that answers "echo", "twice", "fail" and
 *                                 "last" (which it dies after), and keeps its peace about everything else
 *   ask NAME MSG [DAT]            "NAME asked ID", then "NAME finished MSG CODE DAT"
 *   watch NAME PATH               what a directory watcher tells
 *   create PATH CHANGES           "created" or "not created"
 *   remove PATH                   "removed" or "not removed"
 *   close NAME                    "NAME closed"
 *   write NAME WRITER COUNT SIZE  COUNT updates, for ever when it is 0, of up to SIZE bytes; "WRITER wrote N"
 *   die MICROSECONDS              the process is killed so much later
 *   log LEVEL CODE TEXT           a line of the log
 *   verbosity                     "verbosity N"
 *   hold                          "held"; the event loop stands still until a line "go" comes
 *   quit
 */

using morvek::KrelLogger;
using morvek::ZopChangeset;
using morvek::ZopControlCommand;
using morvek::ZopDirWatcher;
using morvek::ZopObject;
using morvek::ZopVariant;

namespace {

using Words = QStringList;

constexpr int Attempts = 100; // to write an update

void say(const QString &line)
{
    const std::string bytes = (line + QLatin1Char('\n')).toStdString();
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    std::fflush(stdout);
}

QString attributeText(const ZopChangeset &changes, const char *name)
{
    return changes.assignments.value(QLatin1String(name)).toString();
}

/*! What "serve" answers. */
void answer(ZopObject *server, const ZopChangeset &request)
{
    const QString msg = attributeText(request, "msg");
    ZopChangeset reply;
    reply.assignments = {{QStringLiteral("peer"), request.assignments.value(QStringLiteral("peer"))},
                         {QStringLiteral("id"), request.assignments.value(QStringLiteral("id"))},
                         {QStringLiteral("res"), ZopVariant(msg)}};
    if (request.assignments.contains(QStringLiteral("dat")))
        reply.assignments.insert(QStringLiteral("dat"), request.assignments.value(QStringLiteral("dat")));
    if (msg == QLatin1String("fail")) {
        reply.assignments.insert(QStringLiteral("err"), ZopVariant(QStringLiteral("7")));
        reply.assignments.insert(QStringLiteral("errmsg"), ZopVariant(QStringLiteral("refused")));
    }
    const int times = msg == QLatin1String("twice") ? 2 : msg.startsWith(QLatin1String("mute")) ? 0 : 1;
    for (int i = 0; i < times; ++i)
        server->setAttributes(reply);
    if (msg == QLatin1String("last"))
        ::kill(getpid(), SIGKILL);
}

class ContractPeer
{
public:
    ContractPeer();

private:
    void readLines();
    void run(const QString &line);
    void open(const QString &name, const QString &path, int mode, bool flag);
    void listen(const QString &name, ZopObject *object);
    void serve(const Words &words);
    void ask(const Words &words);
    void watch(const Words &words);
    void write(const Words &words);
    void hold();
    static void log(const QString &level, unsigned short code, const QString &text);

    ZopObject *object(const Words &words) const { return m_objects.value(words.at(1)); }

    QObject m_owner;
    QSocketNotifier m_input;
    QByteArray m_read;
    QHash<QString, ZopObject *> m_objects;
};

ContractPeer::ContractPeer()
    : m_input(STDIN_FILENO, QSocketNotifier::Read)
{
    QObject::connect(&m_input, &QSocketNotifier::activated, &m_input, [this] { readLines(); });
}

void ContractPeer::readLines()
{
    char chunk[4096];
    const ssize_t size = read(STDIN_FILENO, chunk, sizeof(chunk));
    if (size <= 0)
        QCoreApplication::quit();
    m_read.append(chunk, int(qMax<ssize_t>(size, 0)));
    for (int end = m_read.indexOf('\n'); end != -1; end = m_read.indexOf('\n')) {
        const QString line = QString::fromUtf8(m_read.left(end));
        m_read.remove(0, end + 1);
        run(line);
    }
}

void ContractPeer::run(const QString &line)
{
    const Words words = line.split(QLatin1Char(' '));
    const auto rest = [&words](int from) { return Words(words.mid(from)).join(QLatin1Char(' ')); };
    const QString command = words.at(0);
    if (command == QLatin1String("open")) {
        open(words.at(1), words.at(2), words.at(3).toInt(), words.value(4) == QLatin1String("flag"));
    } else if (command == QLatin1String("cache")) {
        object(words)->setAttributeCacheEnabled(true);
        say(words.at(1) + QStringLiteral(" cached"));
    } else if (command == QLatin1String("set")) {
        const bool done = object(words)->setAttributes(changesFrom(rest(2)));
        say(words.at(1) + (done ? QStringLiteral(" set") : QStringLiteral(" not set")));
    } else if (command == QLatin1String("serve")) {
        serve(words);
    } else if (command == QLatin1String("ask")) {
        ask(words);
    } else if (command == QLatin1String("watch")) {
        watch(words);
    } else if (command == QLatin1String("create")) {
        const bool done = ZopObject::create(words.at(1), changesFrom(rest(2)));
        say(done ? QStringLiteral("created") : QStringLiteral("not created"));
    } else if (command == QLatin1String("remove")) {
        say(ZopObject::remove(words.at(1)) ? QStringLiteral("removed") : QStringLiteral("not removed"));
    } else if (command == QLatin1String("close")) {
        delete m_objects.take(words.at(1));
        say(words.at(1) + QStringLiteral(" closed"));
    } else if (command == QLatin1String("write")) {
        write(words);
    } else if (command == QLatin1String("die")) {
        const itimerval timer = {{0, 0}, {0, words.at(1).toInt()}};
        setitimer(ITIMER_REAL, &timer, nullptr);
    } else if (command == QLatin1String("log")) {
        log(words.at(1), words.at(2).toUShort(), rest(3));
    } else if (command == QLatin1String("verbosity")) {
        say(QStringLiteral("verbosity %1").arg(KrelLogger::getVerbosity()));
    } else if (command == QLatin1String("hold")) {
        hold();
    } else if (command == QLatin1String("quit")) {
        qDeleteAll(m_objects);
        m_objects.clear();
        QCoreApplication::quit();
    }
}

void ContractPeer::open(const QString &name, const QString &path, int mode, bool flag)
{
    auto *opened = new ZopObject(path, ZopObject::PublicationMode(mode), flag, &m_owner);
    m_objects.insert(name, opened);
    listen(name, opened);
    say(name + (opened->isValid() ? QStringLiteral(" open") : QStringLiteral(" not open")));
}

void ContractPeer::listen(const QString &name, ZopObject *listened)
{
    const QString start = name + QLatin1Char(' ');
    QObject::connect(listened, &ZopObject::attributeChanged, listened,
                     [start](const QString &attribute, const ZopVariant &value) {
                         say(start + attribute + QLatin1Char('=') + toText(value));
                     });
    QObject::connect(listened, &ZopObject::attributeRemoved, listened,
                     [start](const QString &attribute) { say(start + QLatin1Char('-') + attribute); });
    QObject::connect(listened, &ZopObject::attributesChanged, listened,
                     [start](const ZopChangeset &changes) { say(start + toText(changes)); });
}

void ContractPeer::serve(const Words &words)
{
    open(words.at(1), words.at(2), ZopObject::Publish, true);
    ZopObject *server = object(words);
    QObject::connect(server, &ZopObject::attributesChanged, server,
                     [server](const ZopChangeset &request) { answer(server, request); });
}

void ContractPeer::ask(const Words &words)
{
    const QString start = words.at(1) + QLatin1Char(' ');
    auto *command = new ZopControlCommand(object(words), &m_owner);
    command->setMessage(words.at(2));
    if (words.size() > 3)
        command->setDat(changesFrom(QStringLiteral("dat=") + words.at(3)).assignments.first());
    QObject::connect(command, &ZopControlCommand::finished, command, [start](ZopControlCommand *finished) {
        say(start
            + QStringLiteral("finished %1 %2 %3")
                  .arg(finished->message(), QString::number(finished->errorCode()), toText(finished->datResponse())));
    });
    command->start();
    say(start + QStringLiteral("asked ") + command->id());
}

void ContractPeer::watch(const Words &words)
{
    const QString start = words.at(1) + QLatin1Char(' ');
    auto *watcher = new ZopDirWatcher(words.at(2), &m_owner);
    QObject::connect(watcher, &ZopDirWatcher::objectAdded, watcher,
                     [start](const QString &name) { say(start + QLatin1Char('+') + name); });
    QObject::connect(watcher, &ZopDirWatcher::objectRemoved, watcher,
                     [start](const QString &name) { say(start + QLatin1Char('-') + name); });
    say(start + (watcher->isValid() ? QStringLiteral("watching") : QStringLiteral("not watching")));
}

/*! Each update carries who wrote it, its number, and a payload that follows from both. */
void ContractPeer::write(const Words &words)
{
    const int writer = words.at(2).toInt();
    const int count = words.at(3).toInt();
    const int largest = words.at(4).toInt();
    for (int n = 1; count == 0 || n <= count; ++n) {
        const qint64 size = (writer * 7919 + n * 104729LL) % largest;
        const QString changes =
            QStringLiteral("w=%1 n=%2 p=%3*%4").arg(writer).arg(n).arg(size).arg(QLatin1Char(char('a' + n % 26)));
        bool done = false;
        // On a busy machine another writer may keep the object locked for too long.
        for (int attempt = 0; !done && attempt < Attempts; ++attempt)
            done = object(words)->setAttributes(changesFrom(changes));
        if (done)
            say(QStringLiteral("%1 wrote %2").arg(writer).arg(n));
    }
}

void ContractPeer::hold()
{
    say(QStringLiteral("held"));
    while (m_read.indexOf("go\n") == -1) {
        char chunk[4096];
        const ssize_t size = read(STDIN_FILENO, chunk, sizeof(chunk));
        if (size <= 0)
            return;
        m_read.append(chunk, int(size));
    }
    m_read.remove(0, m_read.indexOf("go\n") + 3);
}

void ContractPeer::log(const QString &level, unsigned short code, const QString &text)
{
    // What cannot stand in a line of input is written as \n, \e and \u.
    QString said = text;
    said.replace(QLatin1String("\\n"), QLatin1String("\n")).replace(QLatin1String("\\e"), QLatin1String("\x1b"));
    said.replace(QLatin1String("\\u"), QString(QChar(0x2028)));
    if (level == QLatin1String("error"))
        KrelLogger().error(code) << said;
    else if (level == QLatin1String("warning"))
        KrelLogger().warning(code, "%s", said.toLocal8Bit().constData());
    else if (level == QLatin1String("debug1"))
        KrelLogger().debug1(code) << said;
    else
        KrelLogger().debug2(code, "%s", said.toLocal8Bit().constData());
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const ContractPeer peer;
    return QCoreApplication::exec();
}
