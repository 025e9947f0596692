// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_TERMINALTOOL_H
#define MORVEK_TEST_TERMINALTOOL_H

#include <QtCore/QRegularExpression>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <sys/types.h>
#include <termios.h>

namespace morvek {

/*! morvekctl, or a shell, on a terminal of its own: standard input, output and error are that terminal. */
class TerminalTool
{
public:
    TerminalTool() = default;
    ~TerminalTool();

    /*! IgnoreHangup: as nohup starts it. */
    enum Hangup { HeedHangup, IgnoreHangup };

    /*! Before start(): what TERM says the terminal is, and how many columns it has; 0 when it does not tell. */
    void setKind(const QByteArray &kind, int columns = 0);
    /*! Before start(): a further variable of the environment, as "NAME=value". */
    void setVariable(const QByteArray &variable) { m_variable = variable; }
    bool start(const QString &root, const QStringList &arguments, Hangup hangup = HeedHangup);
    /*! Another program: the file of that name, and its arguments. */
    bool startProgram(const QString &root, const QStringList &command, Hangup hangup = HeedHangup);
    pid_t processId() const { return m_process; }
    /*! Waits until \a text has been shown; false when it was not within a minute. */
    bool waitFor(const QString &text) { return waitFor(QRegularExpression(QRegularExpression::escape(text))); }
    bool waitFor(const QRegularExpression &text);
    void type(const QByteArray &keys);
    /*! How the terminal is set. */
    termios modes() const;
    /*! The exit code, waited for; -1 when it was killed. */
    int wait();
    /*! Everything that was shown so far. */
    QString shown() const { return QString::fromUtf8(m_shown); }

private:
    Q_DISABLE_COPY(TerminalTool)
    bool read(int milliseconds);

    QByteArray m_kind = "dumb";
    int m_columns = 0;
    QByteArray m_variable;
    pid_t m_process = -1;
    int m_terminal = -1;
    QByteArray m_shown;
};

} // namespace morvek

#endif
