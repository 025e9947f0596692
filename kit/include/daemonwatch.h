// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_DAEMONWATCH_H
#define MORVEK_DAEMONWATCH_H

#include "kitexport.h"

#include <zopdirwatcher.h>

#include <QtCore/QTimer>

namespace morvek {

/*!
 * Tells when the daemon that serves a control object dies, or is there again: the library does not. One that is
 * replaced at once has died, too, with all that was asked of it.
 */
class MORVEK_KIT_EXPORT DaemonWatch : public QObject
{
    Q_OBJECT

public:
    /*! \a daemon as people call it: "networking", "Wi-Fi", "tethering". */
    explicit DaemonWatch(const QString &daemon, QObject *parent = nullptr);
    ~DaemonWatch() override;

    /*! Whether that daemon serves its control object now. */
    static bool isServed(const QString &daemon);

    /*! Whether it was there when that was looked at, or told, last. */
    bool isThere() const { return m_isThere; }
    /*! Whether it has died since the watch began, or was not there then. */
    bool hasDied() const { return m_hasDied || !isServed(m_daemon); }

    /*! Looks at once. */
    void look();

    /*! Every how many milliseconds it is looked whether it was killed, which nobody tells; 500 at first. */
    int pause() const { return m_timer.interval(); }
    void setPause(int milliseconds);

Q_SIGNALS:
    /*! It has died. This also comes, once and from the event loop, when it was not there at first. */
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
