// SPDX-License-Identifier: Apache-2.0
#ifndef COMMANDLINES_H
#define COMMANDLINES_H

#include <QtCore/QSocketNotifier>
#include <QtCore/QStringList>

#include <functional>

/*! Reads commands from standard input, a line each, in the event loop; its end ends the program. */
class CommandLines
{
public:
    using Handler = std::function<void(const QStringList &words)>;

    explicit CommandLines(Handler handler);

    /*! Writes a line to standard output. */
    static void say(const QString &line);

private:
    void read();

    Handler m_handler;
    QSocketNotifier m_input;
    QByteArray m_read;
};

#endif
