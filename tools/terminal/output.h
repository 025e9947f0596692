// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_OUTPUT_H
#define MORVEK_OUTPUT_H

#include <QtCore/QString>

namespace morvek {

/*! \a text with every character that could steer a terminal written as \\uXXXX, as JSON does it. */
QString printable(const QString &text);

/*! How many columns of a terminal \a text takes, which is printable. */
int displayWidth(const QString &text);

/*! \a text filled up with blanks until it takes \a width columns of a terminal. */
QString padded(const QString &text, int width);

/*!
 * Writes \a line and a line feed to standard output, at once. Only the printable() form of any line is written, so
 * nothing that comes from outside reaches a terminal as it is.
 */
void writeLine(const QString &line);
/*! Writes each line of \a text. */
void writeText(const QString &text);
/*! The same for a \a line whose parts have been made printable. */
void writePrintable(const QString &line);
/*! Why something could not be written to standard output, as errno has it; 0 when everything was. */
int outputError();

/*! Writes "morvekctl: " and \a sentence, why the program ends, as one line to standard error. */
void complain(const QString &sentence);
/*! The same for a \a sentence after which it goes on. */
void note(const QString &sentence);
/*!
 * From now on messages are JSON objects: note() writes {"note"}, and what was complained of last is written by
 * endMessages(), {"code","exitCode","message"}.
 */
void useJsonMessages();
/*! The operation, whose failure will be complained of, has failed with \a code. */
void setFailureCode(int code);
/*! Writes what is left to be written when the program ends with \a exitCode. */
void endMessages(int exitCode);

/*! Writes \a question to standard error, for an answer on the same line. */
void ask(const QString &question);
/*! Ends the line of a question, the answer to which was not shown. */
void endQuestion();
/*! Writes \a note over the last one on the present line of standard error, which is a terminal. */
void replaceNote(const QString &note);

} // namespace morvek

#endif
