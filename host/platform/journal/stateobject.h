// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_STATEOBJECT_H
#define MORVEK_STATEOBJECT_H

#include "filewatcher.h"
#include "journal.h"
#include "objectcheck.h"
#include "zopbackend.h"
#include "zoppath.h"

namespace morvek {

/*! A state object: what its file holds, and what is appended to it. */
class StateObject : public FolderListener, public ZopBackend
{
    Q_OBJECT

public:
    /*! Whether anybody listens. */
    using Heard = std::function<bool()>;

    /*! Without \a heard, the file is followed in any case. Else it sleeps as long as nobody listens: nothing wakes it
     * up. */
    StateObject(const ZopPath &path, Tell tell, Heard heard);
    ~StateObject() override;

    /*! Begins to follow the file; false when there is none. */
    bool start(QString *error) override;
    void wakeUp() override;
    void catchUp() override;
    bool write(const ZopChangeset &changes, QString *error) override;
    bool check(QString *error) override;
    void refresh() override;

    void entryChanged(const QByteArray &name, Event event) override;
    void folderChanged() override;

private:
    // What a file holds altogether, read in as many turns as it takes: before its attributes are told as removed, or in
    // the place of updates that were lost.
    enum Folding { NotFolding, WhatIsGone, WhatIsThere };

    bool isHeard() const { return !m_heard || m_heard(); }
    bool watch(QString *error);
    void unwatch();
    void tryToWatch();
    void fallAsleep();
    void follow();
    void followLater();
    bool hasHadItsTurn();
    void tellAppearances();
    bool drain();
    void startFolding(Folding folding);
    bool fold();
    bool openNext();
    bool open(Journal::Reader *reader);
    bool tellState(const QMap<QString, ZopVariant> &state);

    ZopPath m_path;
    std::shared_ptr<FileWatcher> m_watcher;
    Heard m_heard;
    bool m_isWatching = false;
    bool m_isAwake = false; // follows its file and tells
    Journal::Reader m_reader;
    Journal::Writer m_writer;
    ObjectCheck m_check;
    Folding m_folding = NotFolding;
    QMap<QString, ZopVariant> m_folded;
    qint64 m_toldFrom = 0; // records that end before this are old news
    quint64 m_turn = 0;    // of the event loop, in which so much was told and read:
    int m_toldInTurn = 0;
    qint64 m_workInTurn = 0;
    bool m_isInStep = false;  // the next event is that of an update which has not been read yet
    bool m_hasLooked = false; // for objects that what has been read may speak of
    bool m_followsLater = false;
    bool m_renewsFirst = false; // looks at folders that others have taken the places of before it goes on
    bool m_isBehind = false;    // the path names another file, which could not be opened yet
};

} // namespace morvek

#endif
