// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_USAGE_CANDIDATES_H
#define MORVEK_USAGE_CANDIDATES_H

#include <QtCore/QStringList>

namespace morvek {

/*! What a shell may complete a word of a command line to. */
struct Candidates
{
    enum Files { NoFiles, AllFiles, Directories };

    QStringList words;
    Files files = NoFiles; //!< whose names fit, too: the shell looks for them itself
};

/*!
 * Those of an option's value, by what the help calls it: "on|off" stands for these words, FILE and DIR for names of
 * files. NAME, and whatever else stands alone in capitals, is the user's.
 */
Candidates candidatesOfValue(const QString &name);

/*! \a candidates of the value in \a typed, which begins with "--name=". */
Candidates attachedTo(const QString &typed, Candidates candidates);

/*!
 * What the shells' scripts are told for the last one of \a words: "words", "files" or "directories", and then the words
 * that it may become. What nobody can type, such as control characters in a name from outside, is left out.
 */
QStringList completionLines(const Candidates &candidates, const QStringList &words);

} // namespace morvek

#endif
