// SPDX-License-Identifier: Apache-2.0
#include "zopwire.h"

#include <QtCore/QDataStream>

namespace morvek {

QByteArray encodeChangeset(const ZopChangeset &changes)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_11);
    stream << quint32(changes.assignments.size());
    for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
        stream << it.key() << it->isValid() << it->bytes() << it->encoding();
    stream << quint32(changes.removals.size());
    for (const QString &name : changes.removals)
        stream << name;
    return bytes;
}

bool decodeChangeset(const QByteArray &bytes, ZopChangeset *changes)
{
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_5_11);
    *changes = ZopChangeset();

    QString name;
    quint32 count = 0;
    stream >> count;
    for (; count > 0 && stream.status() == QDataStream::Ok; --count) {
        bool valid = false;
        QByteArray value;
        QByteArray encoding;
        stream >> name >> valid >> value >> encoding;
        changes->assignments.insert(name, valid ? ZopVariant(value, encoding) : ZopVariant());
    }
    stream >> count;
    for (; count > 0 && stream.status() == QDataStream::Ok; --count) {
        stream >> name;
        changes->removals.insert(name);
    }
    return stream.status() == QDataStream::Ok && stream.atEnd();
}

} // namespace morvek
