// SPDX-License-Identifier: Apache-2.0
#ifndef JOURNALROOT_H
#define JOURNALROOT_H

#include "fuzz.h"
#include "journalbytes.h"
#include "zoppath.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <sys/stat.h>

/*! The file of an object in a root of the run's own. */
class JournalRoot
{
public:
    JournalRoot()
    {
        qputenv("ZOP_ROOT", QFile::encodeName(m_root.path()));
        Fuzz::expect(m_root.isValid() && QDir(m_root.path()).mkpath(QStringLiteral("a")), "there is a root");
    }
    morvek::ZopPath path() const { return morvek::ZopPath::object(QStringLiteral("/a/b")); }
    void write(const QByteArray &bytes) const { put(bytes, QIODevice::WriteOnly); }
    void append(const QByteArray &bytes) const { put(bytes, QIODevice::Append); }
    void growTo(qint64 size) const { Fuzz::expect(QFile::resize(name(), size), "the file grows"); }
    qint64 size() const { return status().st_size; }
    /*! Without holes. */
    qint64 dataSize() const { return qMin<qint64>(size(), status().st_blocks * 512); }

private:
    QString name() const { return m_root.filePath(QStringLiteral("a/b")); }
    struct stat status() const
    {
        struct stat status = {};
        Fuzz::expect(stat(QFile::encodeName(name()).constData(), &status) == 0, "the file is there");
        return status;
    }
    void put(const QByteArray &bytes, QIODevice::OpenMode mode) const
    {
        QFile file(name());
        Fuzz::expect(file.open(mode) && file.write(bytes) == bytes.size(), "the file can be written");
    }

    QTemporaryDir m_root;
};

#endif
