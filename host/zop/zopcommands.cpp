// SPDX-License-Identifier: Apache-2.0
#include "zopcommands.h"

#include "journalcheck.h"
#include "recordcommand.h"
#include "recorder.h"
#include "visibletext.h"
#include "zopdirwatcher.h"
#include "zopobject.h"
#include "zoppath.h"
#include "zoproot.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QTextStream>

#include <algorithm>
#include <sys/stat.h>

using namespace morvek;

namespace {

void complain(const QString &sentence)
{
    QTextStream(stderr) << "morvek-zop: " << visible(sentence) << '\n';
}

ExitCode fail(const QString &subject, const QString &reason)
{
    complain(subject + QLatin1String(": ") + reason);
    return Failed;
}

ExitCode refuse(const QString &sentence)
{
    complain(sentence);
    return WrongUsage;
}

void print(const ZopChangeset &changes)
{
    int width = 0;
    for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
        width = qMax(width, visible(it.key()).size());
    QTextStream out(stdout);
    for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
        out << visible(it.key()).leftJustified(width) << " = " << visible(it->toString()) << "  ("
            << visible(QString::fromUtf8(it->encoding())) << ")\n";
    QStringList removals(changes.removals.begin(), changes.removals.end());
    removals.sort();
    for (const QString &name : qAsConst(removals))
        out << visible(name) << " removed\n";
}

/*! The objects of one directory. */
QStringList objectsIn(const QString &directory)
{
    QStringList names;
    ZopDirWatcher watcher(directory);
    QObject::connect(&watcher, &ZopDirWatcher::objectAdded, [&names](const QString &name) { names.append(name); });
    watcher.setNameCacheEnabled(true);
    return names;
}

/*! \a top, and the directories below it, which the stand-in keeps as folders below that of \a top. */
QStringList directoriesBelow(const QString &top, const QString &folder)
{
    QStringList directories {top};
    QDirIterator folders(folder, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (folders.hasNext())
        directories.append(top + folders.next().mid(folder.size()));
    directories.sort();
    return directories;
}

ExitCode list(const QStringList &words)
{
    QString top = words.value(1, QStringLiteral("/zop"));
    if (top.endsWith(QLatin1Char('/')))
        top.chop(1);
    const ZopPath path = ZopPath::directory(top);
    if (!path.isValid())
        return fail(top, path.error());
    const QString folder = QFile::decodeName(path.folder());
    if (!QFileInfo(folder).isDir())
        return fail(top, QStringLiteral("no such directory"));
    const QStringList directories = directoriesBelow(top, folder);
    QTextStream out(stdout);
    for (const QString &directory : directories) {
        for (const QString &name : objectsIn(directory))
            out << visible(directory) << '/' << visible(name) << '\n';
    }
    return Done;
}

/*! Why there is nothing to look at below \a path, which can be opened otherwise; empty when there is. */
QString blindness(const ZopPath &path)
{
    struct stat status;
    const bool isControl = path.place().status(&status) && S_ISSOCK(status.st_mode);
    return isControl ? QStringLiteral("a control object keeps nothing to look at") : QString();
}

QString blindness(const ZopObject &object)
{
    const QString reason = blindness(ZopPath::object(object.path()));
    return reason.isEmpty() ? object.errorString() : reason;
}

ExitCode show(const QStringList &words)
{
    ZopObject object(words.value(1), ZopObject::Subscribe, false);
    if (const QString reason = blindness(object); !reason.isEmpty())
        return fail(object.path(), reason);
    QObject::connect(&object, &ZopObject::attributesChanged, print);
    object.setAttributeCacheEnabled(true);
    return Done;
}

ExitCode watch(const QStringList &words)
{
    ZopObject object(words.value(1), ZopObject::Subscribe, false);
    if (const QString reason = blindness(object); !reason.isEmpty())
        return fail(object.path(), reason);
    QObject::connect(&object, &ZopObject::attributesChanged, [](const ZopChangeset &changes) {
        print(changes);
        QTextStream(stdout) << "--" << Qt::endl;
    });
    object.setAttributeCacheEnabled(true);
    return ExitCode(QCoreApplication::exec());
}

/*! Adds NAME=TEXT, NAME:=JSON, or -NAME for a removal. False, with the reason in \a error, when \a word is none. */
bool addChange(const QString &word, ZopChangeset *changes, QString *error)
{
    const bool removes = word.startsWith(QLatin1Char('-'));
    const int equals = word.indexOf(QLatin1Char('='));
    const bool json = equals > 1 && word.at(equals - 1) == QLatin1Char(':');
    const ZopVariant value(word.mid(equals + 1).toUtf8(), json ? QByteArrayLiteral("json") : QByteArrayLiteral("text"));
    const QString name = removes ? word.mid(1) : word.left(json ? equals - 1 : equals);
    if (name.isEmpty() || (!removes && (equals < 0 || (json && value.toJson().isNull())))) {
        *error = QStringLiteral("not a change: write NAME=TEXT, NAME:=JSON or -NAME");
        return false;
    }
    if (changes->assignments.contains(name) || changes->removals.contains(name)) {
        *error = QStringLiteral("\"%1\" is changed already: give one change for each attribute").arg(name);
        return false;
    }
    if (removes)
        changes->removals.insert(name);
    else
        changes->assignments.insert(name, value);
    return true;
}

ExitCode set(const QStringList &words)
{
    ZopChangeset changes;
    QString error;
    for (const QString &word : words.mid(2)) {
        if (!addChange(word, &changes, &error))
            return refuse(word + QLatin1String(": ") + error);
    }
    ZopObject object(words.value(1), ZopObject::Publish, false);
    return object.setAttributes(changes) ? Done : fail(words.value(1), object.errorString());
}

ExitCode remove(const QStringList &words)
{
    QString error;
    return ZopObject::remove(words.value(1), &error) ? Done : fail(words.value(1), error);
}

ExitCode check(const QStringList &words)
{
    const ZopPath path = ZopPath::object(words.value(1));
    const QString reason = path.isValid() ? blindness(path) : path.error();
    if (!reason.isEmpty())
        return fail(words.value(1), reason);
    const JournalCheck result(path);
    for (const QString &trouble : result.troubles)
        fail(words.value(1), trouble);
    if (!result.summary.isEmpty())
        QTextStream(stdout) << visible(words.value(1)) << ": " << result.summary << '\n';
    return result.troubles.isEmpty() ? Done : Failed;
}

const QStringList Options {QStringLiteral("--help"), QStringLiteral("--version"), QStringLiteral("-h")};
const QString Redact = QStringLiteral("--redact");
const QString Path = QStringLiteral("PATH");
const QString File = QStringLiteral("FILE");
const QString Changes = QStringLiteral("CHANGE...");
const QString Directory = QStringLiteral("[DIRECTORY]");
const QString Directories = QStringLiteral("[DIRECTORY]...");

ExitCode record(const QStringList &words)
{
    QStringList directories = words.mid(2);
    const bool redacts = directories.removeAll(Redact) > 0;
    directories.replaceInStrings(QRegularExpression(QStringLiteral("/$")), QString());
    if (directories.isEmpty())
        directories = Recorder::ownDirectories();
    RecordCommand command(words.at(1), redacts, fail);
    return command.run(directories) ? Done : Failed;
}

struct ZopCommand
{
    QString name;
    QStringList words; //!< as the help calls them; those in brackets may be left out, "..." stands for any number
    QString help;
    ExitCode (*run)(const QStringList &words); //!< options come last
    QStringList options = {};
};

const std::vector<ZopCommand> &commands()
{
    static const std::vector<ZopCommand> table {
        {QStringLiteral("list"),
         {Directory},
         QStringLiteral("the paths of all objects below DIRECTORY, or below /zop"),
         list},
        {QStringLiteral("show"),
         {Path},
         QStringLiteral("the attributes of a state object, each with its encoding"),
         show},
        {QStringLiteral("watch"),
         {Path},
         QStringLiteral("the same, and then each update as it comes, until interrupted"),
         watch},
        {QStringLiteral("set"),
         {Path, Changes},
         QStringLiteral("writes one update; an object that is not there is created"),
         set},
        {QStringLiteral("remove"), {Path}, QStringLiteral("removes a state object"), remove},
        {QStringLiteral("check"),
         {Path},
         QStringLiteral("what is wrong with a state object's file, and what is in it"),
         check},
        {QStringLiteral("record"),
         {File, Directories},
         QStringLiteral(
             "writes what happens to the state objects of the DIRECTORYs, or of the three services, to FILE, "
             "until interrupted; --redact replaces names and addresses"),
         record,
         {Redact}},
    };
    return table;
}

const ZopCommand *findCommand(const QString &name)
{
    const auto it = std::find_if(commands().begin(), commands().end(),
                                 [&name](const ZopCommand &command) { return command.name == name; });
    return it == commands().end() ? nullptr : &*it;
}

QString usageOf(const ZopCommand &command)
{
    QStringList words {command.name};
    for (const QString &option : command.options)
        words += QStringLiteral("[%1]").arg(option);
    return (words + command.words).join(QLatin1Char(' '));
}

/*! What the help calls the word of that number behind the name of \a command; empty when there is none. */
QString wordOf(const ZopCommand &command, int number)
{
    const bool isAny = command.words.constLast().endsWith(QLatin1String("..."));
    return command.words.value(isAny ? qMin(number, command.words.size() - 1) : number);
}

/*! What is wrong with \a words, those that follow the name of \a command; empty when nothing is. */
QString mistakeIn(const QStringList &words, const ZopCommand &command)
{
    const QString usage = QLatin1String("morvek-zop ") + usageOf(command);
    const QString missing = command.words.value(words.size());
    if (!missing.isEmpty() && !missing.startsWith(QLatin1Char('[')))
        return QStringLiteral("%1 is missing: %2").arg(missing, usage);
    if (words.size() > command.words.size() && !command.words.constLast().endsWith(QLatin1String("...")))
        return QStringLiteral("\"%1\" is too much: %2").arg(words.at(command.words.size()), usage);
    for (int i = 0; i < words.size(); ++i) {
        const QString &path = words.at(i);
        if (wordOf(command, i) != File && wordOf(command, i) != Changes && !path.startsWith(QLatin1Char('/')))
            return QStringLiteral("\"%1\" lacks the \"/\" that a path begins with: write /%1").arg(path);
    }
    return QString();
}

/*! The directories below the root, or the state objects in them. */
QStringList pathsThatFit(const QString &word)
{
    const QString top = QStringLiteral("/zop");
    const ZopPath path = ZopPath::directory(top);
    const QString folder = path.isValid() ? QFile::decodeName(path.folder()) : QString();
    if (!QFileInfo(folder).isDir())
        return {};
    QStringList directories = directoriesBelow(top, folder);
    if (word != Path)
        return directories;
    QStringList objects;
    for (const QString &directory : qAsConst(directories)) {
        for (const QString &name : objectsIn(directory)) {
            const QString object = directory + QLatin1Char('/') + name;
            if (blindness(ZopPath::object(object)).isEmpty())
                objects += object;
        }
    }
    return objects;
}

} // namespace

HelpEntries zopCommandEntries()
{
    HelpEntries entries;
    for (const ZopCommand &command : commands())
        entries.emplace_back(usageOf(command), command.help);
    return entries;
}

Candidates zopCandidates(const QStringList &words)
{
    Candidates candidates;
    if (words.size() < 2) {
        for (const ZopCommand &command : commands())
            candidates.words += command.name;
        candidates.words += Options;
    } else if (const ZopCommand *command = findCommand(words.constFirst())) {
        QStringList before = words.mid(1);
        before.removeLast();
        for (const QString &option : command->options) {
            if (before.removeAll(option) == 0)
                candidates.words += option;
        }
        const QString word = wordOf(*command, before.size());
        if (word == File)
            candidates.files = Candidates::AllFiles;
        else if (word == Path || word == Directory || word == Directories)
            candidates.words += pathsThatFit(word);
    }
    return candidates;
}

ExitCode runZopCommand(QStringList words)
{
    const QString seeHelp = QStringLiteral("see 'morvek-zop --help'");
    if (words.isEmpty())
        return refuse(QStringLiteral("a command is missing: ") + seeHelp);
    const QString name = words.constFirst();
    if (Options.contains(name))
        return refuse(QStringLiteral("\"%1\" is too much: morvek-zop %2").arg(words.at(1), name));
    const ZopCommand *command = findCommand(name);
    QStringList options = {};
    for (const QString &option : command ? command->options : QStringList()) {
        if (words.removeAll(option) > 0)
            options += option;
    }
    for (const QString &word : words.mid(0, 2)) { // what follows may be the removal of an attribute
        if (word.startsWith(QLatin1Char('-')))
            return refuse(QStringLiteral("there is no option \"%1\": %2").arg(word, seeHelp));
    }
    if (!command)
        return refuse(QStringLiteral("there is no command \"%1\": %2").arg(name, seeHelp));
    const QString mistake = mistakeIn(words.mid(1), *command);
    if (!mistake.isEmpty())
        return refuse(mistake);
    const ZopRoot root = ZopRoot::look();
    return root.state == ZopRoot::Unusable ? fail(root.reason, root.mend) : command->run(words + options);
}
