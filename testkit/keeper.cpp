// SPDX-License-Identifier: Apache-2.0
#include "keeper.h"

#include <QtCore/QFile>

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvek {

namespace {

// It leaves the process tree and the session of the test, so that who ends those does not end it. A line that is told
// lets it go, the end of all who could tell one has it remove the folder.
const char Script[] = "exec 3<&0; cd /; trap '' HUP INT QUIT TERM\n"
                      "{ read -r line || rm -rf -- \"$1\"; } <&3 3<&- &";

/*! Zero, or what is wrong. */
int spawnShell(const QByteArray &folder, int input, pid_t *shell)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    for (const int output : {STDOUT_FILENO, STDERR_FILENO}) // which somebody may read to their end
        posix_spawn_file_actions_addopen(&actions, output, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);

    const QByteArray words[] = {"sh", "-c", Script, "sh", folder};
    char *arguments[6] = {};
    for (size_t i = 0; i < 5; ++i)
        arguments[i] = const_cast<char *>(words[i].constData());
    const int error = posix_spawn(shell, "/bin/sh", &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

Keeper::~Keeper()
{
    if (m_line == -1)
        return;
    struct sigaction ignore = {};
    struct sigaction former = {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, &former);
    const ssize_t written = write(m_line, "\n", 1);
    Q_UNUSED(written)
    sigaction(SIGPIPE, &former, nullptr);
    close(m_line);
}

bool Keeper::start(const QString &folder, QString *error)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        *error = qt_error_string(errno);
        return false;
    }
    pid_t shell = -1;
    const int failure = spawnShell(QFile::encodeName(folder), ends[0], &shell);
    close(ends[0]);
    m_line = ends[1];
    if (failure != 0) {
        *error = qt_error_string(failure);
        return false;
    }
    while (waitpid(shell, nullptr, 0) == -1 && errno == EINTR) { }
    return true;
}

} // namespace morvek
