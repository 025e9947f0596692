// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPDIRWATCHER_H
#define MORVEK_ZOPDIRWATCHER_H

#include "platformexport.h"

#include <QtCore/QObject>

#include <memory>

namespace morvek {

/*!
 * Announces the objects of one directory as they appear and vanish. The directory need not exist yet.
 *
 * Names that are there already are announced on the next turn of the event loop, or by setNameCacheEnabled()
 * inside its call, each once. A control object is there while a daemon serves it.
 *
 * The default argument is for daemons, tools and tests: the library does without.
 */
class MORVEK_PLATFORM_EXPORT ZopDirWatcher : public QObject
{
    Q_OBJECT

public:
    explicit ZopDirWatcher(const QString &path, QObject *parent = nullptr);
    ~ZopDirWatcher() override;

    bool isValid() const;
    QString errorString() const;

    /*! With true, announces the names that are there already at once, to whoever is connected. */
    void setNameCacheEnabled(bool enabled);

Q_SIGNALS:
    void objectAdded(const QString &name);
    void objectRemoved(const QString &name);

private:
    Q_DISABLE_COPY(ZopDirWatcher)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
