// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WATCHEDFOLDER_H
#define MORVEK_WATCHEDFOLDER_H

#include "filewatcher.h"

namespace morvek {

/*! One folder of a FileWatcher, and who listens to it. */
class WatchedFolder : public FolderListener
{
public:
    WatchedFolder(FileWatcher *watcher, const QByteArray &path);
    ~WatchedFolder() override;

    /*! Sets the watch, on the nearest folder above when this one does not exist. False with errno. */
    bool attach();
    /*! Whether the path names another folder than the watched one. */
    bool isExchanged() const;
    /*! The folder may not be there any more, or be another one. */
    void renew();

    void add(const QByteArray &name, FolderListener *listener);
    void remove(const QByteArray &name, FolderListener *listener);
    bool isUnused() const { return m_listeners.isEmpty(); }

    void tell(const QByteArray &name, Event event) const;
    /*! The same to those only who watch the names of this folder. */
    void tellOfNames(const QByteArray &name, Event event) const;
    void tellAll() const;

    Kind kind() const override { return OfFolders; }
    // What happens to this folder in the one above, while it is awaited there.
    void entryChanged(const QByteArray &name, Event event) override;
    void folderChanged() override;

private:
    using Listeners = QVector<QPointer<FolderListener>>;

    void awaitNothing();

    FileWatcher *m_watcher;
    QByteArray m_path;
    QMap<QByteArray, Listeners> m_listeners; // by entry; those of all entries under the empty name
    int m_watch = -1;
    bool m_awaited = false;
};

} // namespace morvek

#endif
