// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_BARELOOPS_H
#define MORVEK_BARELOOPS_H

class QString;
class Rounds;

// What the library rests on, with nothing around it.

/*! A byte appended to a file in \a folder, and so many processes that block in inotify until then. */
int runBareWakeUp(const QString &folder, int receivers, Rounds *rounds);
/*! A request and a reply on a local socket. */
int runBareSocket(Rounds *rounds);
/*! What is appended to the journal of the first interface, read in Qt's event loop, and not looked at. */
int runJournalLoop(Rounds *rounds);

#endif
