// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_COMMAND_H
#define MORVEK_COMMAND_H

#include "commandline.h"
#include "exitcode.h"

#include <QtCore/QObject>

#include <memory>
#include <vector>

namespace morvek {

/*! One run of a command: start() begins it, finished() ends it once, inside start() or later. */
class Command : public QObject
{
    Q_OBJECT

public:
    Command() = default;
    virtual void start() = 0;

Q_SIGNALS:
    void finished(morvek::ExitCode code);

private:
    Q_DISABLE_COPY(Command)
};

/*! A word that follows a command. */
struct Word
{
    QString name; //!< as the help calls it
    /*! What a shell may complete it to, when \a before are the words between the command and it. */
    QStringList (*candidates)(const QStringList &before);
};

struct Option
{
    QString name;
    QString value; //!< what the help calls its value, see candidatesOfValue(); empty when it takes none
    QString help;
};

struct Usage
{
    QString arguments;
    QString help;
};

/*! A command: what the command line, the help and the shell's completion know of it, and how it is made. */
struct CommandInfo
{
    QString name; //!< of a group's member: the group's name, a blank, its own
    std::vector<Word> words;
    int optionalWords; //!< how many of the words, from the last one back, may be left out
    std::vector<Option> options;
    std::vector<Usage> usages;
    QString details;
    QStringList examples;
    /*! Null, with a sentence in \a error, when the words or values make no sense. */
    std::unique_ptr<Command> (*create)(const CommandLine &line, QString *error);
};

} // namespace morvek

#endif
