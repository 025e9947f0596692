// SPDX-License-Identifier: Apache-2.0
#include "commandtable.h"
#include "completion.h"
#include "helpcommand.h"
#include "librarylog.h"
#include "output.h"
#include "servicecommand.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <langinfo.h>
#include <unistd.h>

using namespace morvek;

namespace {

// Names from outside ASCII must arrive and be written intact, whatever the environment says.
void useUtf8()
{
    if (!std::setlocale(LC_CTYPE, "") || std::strcmp(::nl_langinfo(CODESET), "UTF-8") != 0)
        ::setenv("LC_ALL", "C.UTF-8", 1);
}

// Otherwise the next file that is opened would be taken for what is missing. These fail as a closed one does.
void fillStandardStreams()
{
    const int modes[] = {O_WRONLY, O_RDONLY, O_RDONLY};
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", modes[stream]); // takes the lowest number that is free
    }
}

int ended(ExitCode code)
{
    if (outputError() != 0 && outputError() != EPIPE) // a reader that has seen enough is no mistake of anybody
        complain(QStringLiteral("the output could not be written: %1").arg(qt_error_string(outputError())));
    if (outputError() != 0 && code == Done)
        code = Failed;
    endMessages(code);
    return code;
}

int refuse(const QString &error)
{
    complain(error);
    return ended(WrongUsage);
}

int runCommand(const CommandLine &line)
{
    QString error;
    const std::unique_ptr<Command> command = line.command->create(line, &error);
    if (!command)
        return refuse(error);
    QObject::connect(command.get(), &Command::finished, [](ExitCode code) { QCoreApplication::exit(code); });
    QTimer::singleShot(0, command.get(), &Command::start);
    return ended(ExitCode(QCoreApplication::exec()));
}

int complete(const QStringList &words)
{
    const QStringList lines = completionLines(completions(words), words);
    for (const QString &line : lines)
        writeLine(line);
    return ended(Done);
}

} // namespace

int main(int argc, char *argv[])
{
    fillStandardStreams();
    useUtf8();
    std::signal(SIGPIPE, SIG_IGN); // a write that fails ends the command in order
    const QCoreApplication application(argc, argv);
    hideLibraryLog();
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.value(0) == QLatin1String("complete"))
        return complete(arguments.mid(arguments.value(1) == QLatin1String("--") ? 2 : 1));

    if (arguments.isEmpty()) {
        writeText(shortHelp());
        return ended(WrongUsage);
    }

    // Also what is wrong with the command line is told so.
    if (arguments.mid(0, arguments.indexOf(QStringLiteral("--"))).contains(QLatin1String("--json")))
        useJsonMessages();
    CommandLine line;
    QString error;
    if (!parseCommandLine(arguments, &line, &error))
        return refuse(error);
    if (line.has(versionOption().name)) {
        writeLine(QStringLiteral("morvekctl " MORVEK_VERSION));
        return ended(Done);
    }
    if (line.has(helpOption().name)) {
        writeText(helpText(line.name));
        return ended(Done);
    }
    if (line.has(verboseOption().name))
        showLibraryLog();
    return runCommand(line);
}
