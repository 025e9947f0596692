// SPDX-License-Identifier: Apache-2.0
#include "terminaltool.h"

#include "childprocess.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QVector>

#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvek {

namespace {

constexpr int Minute = 60000;

} // namespace

TerminalTool::~TerminalTool()
{
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    if (m_terminal >= 0)
        ::close(m_terminal);
}

void TerminalTool::setKind(const QByteArray &kind, int columns)
{
    m_kind = kind;
    m_columns = columns;
}

bool TerminalTool::start(const QString &root, const QStringList &arguments, Hangup hangup)
{
    return startProgram(root, QStringList {QStringLiteral(MORVEKCTL)} + arguments, hangup);
}

bool TerminalTool::startProgram(const QString &root, const QStringList &command, Hangup hangup)
{
    QVector<QByteArray> words;
    for (const QString &word : command)
        words.append(word.toUtf8());
    QVector<char *> pointers;
    for (QByteArray &word : words)
        pointers.append(word.data());
    pointers.append(nullptr);
    const QByteArray folder = root.toUtf8();

    winsize size = {};
    size.ws_col = static_cast<unsigned short>(m_columns);
    m_process = ::forkpty(&m_terminal, nullptr, nullptr, &size);
    if (m_process == 0) {
        ::setenv("ZOP_ROOT", folder.constData(), 1);
        ::setenv("TERM", m_kind.constData(), 1);
        ::unsetenv("KREL_VERBOSITY");
        ::unsetenv("NO_COLOR");
        if (!m_variable.isEmpty())
            ::putenv(m_variable.data());
        restoreSignals();
        if (hangup == IgnoreHangup)
            ::signal(SIGHUP, SIG_IGN);
        ::execv(pointers.first(), pointers.data());
        ::_exit(127);
    }
    return m_process > 0;
}

bool TerminalTool::waitFor(const QRegularExpression &text)
{
    QElapsedTimer timer;
    timer.start();
    while (!shown().contains(text)) {
        if (timer.elapsed() > Minute || !read(Minute))
            return false;
    }
    return true;
}

void TerminalTool::type(const QByteArray &keys)
{
    const ssize_t ignored = ::write(m_terminal, keys.constData(), size_t(keys.size()));
    Q_UNUSED(ignored)
}

termios TerminalTool::modes() const
{
    termios modes = {};
    ::tcgetattr(m_terminal, &modes);
    return modes;
}

int TerminalTool::wait()
{
    while (read(Minute)) { }
    int status = 0;
    ::waitpid(m_process, &status, 0);
    m_process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/*! False when nothing came in that time, or nobody can write any more. */
bool TerminalTool::read(int milliseconds)
{
    pollfd state = {m_terminal, POLLIN, 0};
    char bytes[1000];
    if (::poll(&state, 1, milliseconds) != 1)
        return false;
    const ssize_t count = ::read(m_terminal, bytes, sizeof(bytes));
    m_shown.append(bytes, int(std::max(ssize_t(0), count)));
    return count > 0;
}

} // namespace morvek
