// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_RECORDER_H
#define MORVEK_RECORDER_H

#include "recordedevent.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtCore/QStringList>

#include <deque>
#include <functional>
#include <map>
#include <memory>

namespace morvek {

class ZopDirWatcher;
class ZopObject;

/*!
 * Tells what happens to the state objects of some directories: first what is there, then each update once and in order.
 *
 * It knows the platform by its declarations only, so it can be built on a unit. There is no way to ask the platform
 * which objects are control objects: those of the services are called "control".
 */
class Recorder : public QObject
{
    Q_OBJECT

public:
    /*! The directories of the three services. */
    static QStringList ownDirectories();

    explicit Recorder(const QStringList &directories, QObject *parent = nullptr);
    ~Recorder() override;

    /*! Where more is known: objects that \a isControl holds for are left out, too. */
    void leaveOut(std::function<bool(const QString &path)> isControl) { m_isControl = std::move(isControl); }

    /*! Tells what is there, inside the call. False, with the reason in \a error, when a directory cannot be watched. */
    bool start(QString *error);
    /*! Tells what is still to be told. */
    void finish();

Q_SIGNALS:
    void happened(const morvek::RecordedEvent &event);
    /*! The object cannot be recorded. */
    void missed(const QString &path, const QString &reason);

private:
    Q_DISABLE_COPY(Recorder)

    struct Recorded
    {
        std::unique_ptr<ZopObject> object;
        QSet<QString> attributes; // that it has
    };

    struct Held
    {
        RecordedEvent event;
        bool mayBeTheEnd;
    };

    void onAdded(const QString &path);
    void onRemoved(const QString &path);
    void onChanged(const QString &path, const ZopChangeset &changes);
    void tell(RecordedEvent event, bool mayBeTheEnd = false);

    QStringList m_directories;
    std::function<bool(const QString &path)> m_isControl;
    std::vector<std::unique_ptr<ZopDirWatcher>> m_watchers;
    std::map<QString, Recorded> m_objects;
    std::deque<Held> m_held;
    QElapsedTimer m_since;
    RecordedEvent *m_opening = nullptr; // takes what the object holds
    bool m_isStarting = false;
};

} // namespace morvek

#endif
