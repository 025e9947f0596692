// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_DAEMONWATCH_H
#define MORVEK_DAEMONWATCH_H

#include <zopdirwatcher.h>

#include <QtCore/QTimer>

namespace morvek {

/*!
 * Tells when the daemon that serves a control object dies, or is there again: the library does not. A daemon has been
 * there before this begins to watch. One that is replaced at once has died, too, with all that was asked of it.
 */
class DaemonWatch : public QObject
{
    Q_OBJECT

public:
    /*! \a daemon as people call it: "networking", "Wi-Fi", "tethering". */
    explicit DaemonWatch(const QString &daemon);

    static bool isServed(const QString &daemon);

    /*! Whether the daemon that was there has died. */
    bool hasDied() const { return m_hasDied || !isServed(m_daemon); }

Q_SIGNALS:
    void died();
    void returned();

private:
    Q_DISABLE_COPY(DaemonWatch)
    void set(bool isThere);

    const QString m_daemon;
    ZopDirWatcher m_folder;
    QTimer m_timer;
    bool m_isThere = false;
    bool m_hasDied = false;
};

} // namespace morvek

#endif
