// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_ZOPDIRWATCHER_H
#define LEAST_ZOPDIRWATCHER_H

#include <QtCore/QObject>

namespace morvek {

class ZopDirWatcher : public QObject
{
    Q_OBJECT

public:
    ZopDirWatcher(const QString &path, QObject *parent);

    bool isValid() const;
    QString errorString() const;
    void setNameCacheEnabled(bool enabled);

Q_SIGNALS:
    void objectAdded(const QString &name);
    void objectRemoved(const QString &name);
};

} // namespace morvek

#endif
