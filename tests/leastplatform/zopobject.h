// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_ZOPOBJECT_H
#define LEAST_ZOPOBJECT_H

#include <QtCore/QObject>

namespace morvek {

class ZopVariant;
struct ZopChangeset;

class ZopObject : public QObject
{
    Q_OBJECT

public:
    enum PublicationMode : int; // 1 reads, 2 reads and writes

    ZopObject(const QString &path, PublicationMode mode, bool flag, QObject *parent);

    bool isValid() const;
    QString errorString() const;
    QString path() const;
    void setAttributeCacheEnabled(bool enabled);
    ZopVariant attribute(const QString &name, const ZopVariant &defaultValue) const;
    bool setAttributes(const ZopChangeset &changes);

Q_SIGNALS:
    void attributeChanged(const QString &name, const ZopVariant &value);
    void attributeRemoved(const QString &name);
    void attributesChanged(const ZopChangeset &changes);
};

} // namespace morvek

#endif
