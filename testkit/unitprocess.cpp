// SPDX-License-Identifier: Apache-2.0
#include "unitprocess.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStandardPaths>

#include <csignal>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace morvek {

namespace {

const QString Name = QStringLiteral("morvek-hostd");

bool isProgram(const QString &file)
{
    const QFileInfo info(file);
    return info.isFile() && info.isExecutable();
}

/*! Where it stands when this library and it are installed. */
QString besideLibrary()
{
    Dl_info library = {};
    if (dladdr(reinterpret_cast<const void *>(&besideLibrary), &library) == 0)
        return QString();
    const QDir folder = QFileInfo(QFile::decodeName(library.dli_fname)).absoluteDir();
    return QDir::cleanPath(folder.filePath(QStringLiteral(MORVEK_PROGRAMS_OF_LIBRARY))) + QLatin1Char('/') + Name;
}

} // namespace

QString UnitProcess::find(QString *error)
{
    QString named = qEnvironmentVariable("MORVEK_HOSTD");
    if (!named.isEmpty()) {
        if (isProgram(named))
            return named;
        *error = QStringLiteral("MORVEK_HOSTD is \"%1\", which is no program").arg(named);
        return QString();
    }
    QString beside = besideLibrary();
    if (isProgram(beside))
        return beside;
    QString onPath = QStandardPaths::findExecutable(Name);
    if (onPath.isEmpty())
        *error =
            QStringLiteral("there is no morvek-hostd: it is neither \"%1\" nor in a folder of PATH, and MORVEK_HOSTD "
                           "names none")
                .arg(beside);
    return onPath;
}

void UnitProcess::setupChildProcess()
{
    setsid(); // who interrupts a test in a debugger does not interrupt the unit
    fcntl(m_line, F_SETFD, 0);
    // Standard input is a pipe that only the parent process writes to, and it never does. When it is gone, the kernel
    // sends this signal: to a process that is stopped or hangs, too, and whichever thread has started it.
    fcntl(STDIN_FILENO, F_SETOWN, getpid());
    fcntl(STDIN_FILENO, F_SETSIG, SIGKILL);
    fcntl(STDIN_FILENO, F_SETFL, fcntl(STDIN_FILENO, F_GETFL) | O_ASYNC);
    pollfd parent = {STDIN_FILENO, 0, 0};
    if (poll(&parent, 1, 0) == 1)
        _exit(1); // it was gone before
}

} // namespace morvek
