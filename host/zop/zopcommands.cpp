// SPDX-License-Identifier: Apache-2.0
#include "zopcommands.h"

#include "journalcheck.h"
#include "visibletext.h"
#include "zopdirwatcher.h"
#include "zopobject.h"
#include "zoppath.h"
#include "zoproot.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>
#include <QtCore/QTextStream>

#include <sys/stat.h>

using namespace morvek;

namespace {

ExitCode fail(const QString &subject, const QString &reason)
{
    QTextStream(stderr) << "morvek-zop: " << visible(subject) << ": " << visible(reason) << '\n';
    return Failed;
}

void print(const ZopChangeset &changes)
{
    QTextStream out(stdout);
    for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
        out << visible(it.key()) << " = " << visible(it->toString()) << "  ("
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

ExitCode list(const QStringList &words)
{
    QString top = words.value(1, QStringLiteral("/zop"));
    if (top.endsWith(QLatin1Char('/')))
        top.chop(1);
    const ZopPath path = ZopPath::directory(top);
    if (!path.isValid())
        return fail(top, path.error());
    // The stand-in keeps a directory of objects as a folder below the root.
    const QString folder = QFile::decodeName(path.folder());
    if (!QFileInfo(folder).isDir())
        return fail(top, QStringLiteral("no such directory"));
    QStringList directories {top};
    QDirIterator folders(folder, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (folders.hasNext())
        directories.append(top + folders.next().mid(folder.size()));
    directories.sort();
    QTextStream out(stdout);
    for (const QString &directory : qAsConst(directories)) {
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

/*! NAME=TEXT, NAME:=JSON, or -NAME for a removal. */
bool parse(const QString &word, ZopChangeset *changes)
{
    if (word.startsWith(QLatin1Char('-'))) {
        changes->removals.insert(word.mid(1));
        return word.size() > 1;
    }
    const int equals = word.indexOf(QLatin1Char('='));
    const bool json = equals > 1 && word.at(equals - 1) == QLatin1Char(':');
    const ZopVariant value(word.mid(equals + 1).toUtf8(), json ? QByteArrayLiteral("json") : QByteArrayLiteral("text"));
    changes->assignments.insert(word.left(json ? equals - 1 : equals), value);
    return equals > 0 && (!json || !value.toJson().isNull());
}

ExitCode set(const QStringList &words)
{
    ZopChangeset changes;
    for (const QString &word : words.mid(2)) {
        if (!parse(word, &changes)) {
            fail(word, QStringLiteral("not a change: write NAME=TEXT, NAME:=JSON or -NAME"));
            return WrongUsage;
        }
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

const struct
{
    QLatin1String name;
    int fewest; // words, the name included
    int most;
    ExitCode (*run)(const QStringList &words);
} Commands[] = {
    {QLatin1String("list"), 1, 2, list},     {QLatin1String("show"), 2, 2, show},
    {QLatin1String("watch"), 2, 2, watch},   {QLatin1String("set"), 3, 1000, set},
    {QLatin1String("remove"), 2, 2, remove}, {QLatin1String("check"), 2, 2, check},
};

} // namespace

ExitCode runZopCommand(const QStringList &words)
{
    for (const auto &command : Commands) {
        if (words.value(0) != command.name || words.size() < command.fewest || words.size() > command.most)
            continue;
        const ZopRoot root = ZopRoot::look();
        return root.state == ZopRoot::Unusable ? fail(root.reason, root.mend) : command.run(words);
    }
    return WrongUsage;
}
