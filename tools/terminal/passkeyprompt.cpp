// SPDX-License-Identifier: Apache-2.0
#include "passkeyprompt.h"

#include "output.h"
#include "passkey.h"

#include <QtCore/QSocketNotifier>

#include <unistd.h>
#include <utility>

namespace morvek {

PasskeyPrompt::PasskeyPrompt(const QString &question)
{
    m_silent = ::tcgetattr(STDIN_FILENO, &m_modes) == 0;
    termios silent = m_modes;
    silent.c_lflag &= ~tcflag_t(ECHO);
    // Ctrl-C ends the command in order. These two would leave the terminal as it is now.
    silent.c_cc[VQUIT] = silent.c_cc[VSUSP] = _POSIX_VDISABLE;
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    ask(question);

    auto notifier = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        onInput();
    });
}

PasskeyPrompt::~PasskeyPrompt()
{
    restoreTerminal();
}

bool PasskeyPrompt::isPossible()
{
    return ::isatty(STDIN_FILENO) != 0;
}

void PasskeyPrompt::onInput()
{
    const QString passkey = readTypedPasskey();
    restoreTerminal();
    Q_EMIT typed(passkey);
}

void PasskeyPrompt::restoreTerminal()
{
    if (!std::exchange(m_silent, false))
        return;
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_modes);
    endQuestion();
}

} // namespace morvek
