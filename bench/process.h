// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PROCESS_H
#define MORVEK_PROCESS_H

#include <QtCore/QProcess>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <functional>
#include <memory>

/*! A process of a measurement; it ends with its owner. */
class Process
{
public:
    Process(const QString &program, const QStringList &arguments);
    ~Process();

    /*! This program in the role that \a arguments begin with. */
    static std::unique_ptr<Process> role(const QStringList &arguments);

    qint64 id() const { return m_process.processId(); }
    QByteArray readLine();
    void writeLine(const QByteArray &line);
    /*! Waits for the end, and returns what is left of the output. */
    QByteArray finish();

private:
    Q_DISABLE_COPY(Process)
    QProcess m_process;
};

/*! Where another program of the bench is. */
QString programBeside(const QString &name);

/*! Calls \a heard with each line of this process's input while \a owner lives; the application ends with the input. */
void onLines(QObject *owner, const std::function<void(const QByteArray &line)> &heard);

/*! A fresh root of objects while it lives: on a memory file system, where a root belongs, if there is one. */
class Root
{
public:
    Root();
    QString folder() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};

/*! Lets this process, and those that it starts from now on, run on one core only, or on all. */
void useOneCore(bool one);

#endif
