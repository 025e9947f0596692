// SPDX-License-Identifier: Apache-2.0
#include "hostfiles.h"

#include "krellogger.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>

#include <sys/stat.h>

using morvek::KrelLogger;

QString fileOf(const QString &path)
{
    return QFile::decodeName(qgetenv("ZOP_ROOT")) + path;
}

QByteArray content(const QString &path)
{
    QFile file(fileOf(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool plant(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(fileOf(path)).path());
    QFile file(fileOf(path));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

int modeOf(const QString &path)
{
    struct stat status;
    return lstat(QFile::encodeName(fileOf(path)).constData(), &status) == 0 ? int(status.st_mode & 07777) : -1;
}

QStringList allFiles()
{
    QStringList files;
    QDirIterator it(fileOf(QString()), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << it.next();
    return files;
}

AnotherRoot::AnotherRoot(const QString &root)
    : m_usual(qgetenv("ZOP_ROOT"))
{
    qputenv("ZOP_ROOT", QFile::encodeName(root));
}

AnotherRoot::~AnotherRoot()
{
    qputenv("ZOP_ROOT", m_usual);
}

LogLines::LogLines()
{
    KrelLogger::setSink([this](KrelLogger::Level, unsigned short, const QString &text) { lines << text; });
}

LogLines::~LogLines()
{
    KrelLogger::setSink(KrelLogger::Sink());
}
