// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_PROCESSES_H
#define MORVEK_TEST_PROCESSES_H

#include "childprocess.h"

#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

namespace morvek {

/*! How one run of morvekctl ended. */
struct ToolResult
{
    int code = -2; //!< -1 when it was killed, -2 when it did not end within a minute
    QString output;
    QString errors;
};

/*!
 * Runs morvekctl on \a root with \a variables ("NAME=value") added to the environment and \a input on its standard
 * input, until it ends.
 */
ToolResult runTool(const QString &root, const QStringList &arguments, const QStringList &variables = {},
                   const QByteArray &input = {});

/*! Runs morvekctl with \a arguments, words with blanks between them, on \a root without a standard input. */
ToolResult runWithClosedInput(const QString &root, const QString &arguments);

/*!
 * The line by which morvekctl, called with \a arguments, tells why it ends with \a exitCode: a JSON object with --json,
 * in which \a code is that of the operation.
 */
QString complaintLine(const QString &arguments, const QString &sentence, int exitCode,
                      const QString &code = QStringLiteral("null"));

/*! A process whose standard output is read line by line. */
class LineProcess
{
public:
    LineProcess(const QString &program, const QString &root);
    ~LineProcess();

    /*! Sends what it writes to \a file, not to nextLine(). */
    void writeTo(const QString &file);
    void start(const QStringList &arguments);
    /*! The next line, waited for; null when the output has ended or nothing came within a minute. */
    QString nextLine();
    qint64 processId() const { return m_process.processId(); }
    /*! Writes \a bytes to its standard input, and closes that. */
    void feed(const QByteArray &bytes);
    /*! Sends \a signal. */
    void signal(int signal);
    /*! The exit code, waited for; -1 when it was killed, -2 when it did not end within a minute. */
    int wait();
    QString errors();

private:
    ChildProcess m_process;
};

/*! morvekctl in the background. */
class Tool : public LineProcess
{
public:
    explicit Tool(const QString &root);

    /*! The next line of a monitor, without its time; null when it has none. */
    QString nextEvent();
    /*! The same for a line of JSON; empty when it has no time. */
    QJsonObject nextEventObject();
};

/*! morvek-hostd. */
class Daemon : public LineProcess
{
public:
    explicit Daemon(const QString &root);
    /*! Starts it and waits until everything is published. \a scenario is a shipped one, or a file of the tests. */
    bool publish(const QString &scenario, const QStringList &arguments = {});
};

} // namespace morvek

#endif
