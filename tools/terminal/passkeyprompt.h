// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PASSKEYPROMPT_H
#define MORVEK_PASSKEYPROMPT_H

#include <QtCore/QObject>

#include <termios.h>

namespace morvek {

/*! Asks for a passkey on the terminal, which is silent until something was typed or this goes. */
class PasskeyPrompt : public QObject
{
    Q_OBJECT

public:
    explicit PasskeyPrompt(const QString &question);
    ~PasskeyPrompt() override;

    /*! Whether standard input is a terminal. */
    static bool isPossible();

Q_SIGNALS:
    /*! Emitted once; \a passkey is empty when none was typed. */
    void typed(const QString &passkey);

private:
    Q_DISABLE_COPY(PasskeyPrompt)
    void onInput();
    void restoreTerminal();

    termios m_modes = {};
    bool m_silent = false;
};

} // namespace morvek

#endif
