// SPDX-License-Identifier: Apache-2.0
#ifndef SECRECY_H
#define SECRECY_H

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QSet>

// Where a secret could leave a trace.

/*!
 * The contents of every file below \a folder but those whose names begin with \a known and those in the folder
 * \a passedBy, with their names.
 */
inline QByteArray filesBelow(const QString &folder, const QString &known = QString(),
                             const QString &passedBy = QString())
{
    QByteArray contents;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        contents += QFile::encodeName(file.fileName()) + '\n';
        if ((known.isEmpty() || !it.fileName().startsWith(known)) && it.fileInfo().path() != passedBy
            && QFileInfo(file).isFile() && file.open(QIODevice::ReadOnly))
            contents += file.readAll();
    }
    return contents;
}

/*! The value of \a field in the status of a process; 0 when it has ended. */
inline qint64 statusOf(const QString &process, const QByteArray &field)
{
    QFile file(QStringLiteral("/proc/%1/status").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray status = file.readAll();
    const int start = status.indexOf('\n' + field + ":\t");
    return start == -1 ? 0 : status.mid(start + field.size() + 3).split('\n').first().toLongLong();
}

/*! The processes of this machine. */
inline QStringList allProcesses()
{
    return QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[1-9]*")}, QDir::Dirs);
}

/*! What others may read of a process. */
inline QByteArray processText(const QString &process)
{
    QByteArray text;
    for (const char *name : {"cmdline", "environ", "comm"}) {
        QFile file(QStringLiteral("/proc/%1/%2").arg(process, QLatin1String(name)));
        if (file.open(QIODevice::ReadOnly))
            text += file.readAll() + '\n';
    }
    return text;
}

/*! What others may read of this process, of the daemon, and of what either has started. */
inline QByteArray processList(qint64 daemon)
{
    const QSet<qint64> family {QCoreApplication::applicationPid(), daemon};
    QByteArray list;
    const QStringList processes = allProcesses();
    for (const QString &process : processes) {
        const qint64 parent = statusOf(process, "PPid");
        if (family.contains(process.toLongLong()) || (parent != 0 && family.contains(parent)))
            list += processText(process);
    }
    return list;
}

/*! As text, as JSON writes it, in UTF-16, and in the forms that a dump would show. */
inline QList<QByteArray> formsOf(const QByteArray &secret)
{
    const QString text = QString::fromUtf8(secret);
    const QByteArray json = QJsonDocument(QJsonArray {text}).toJson(QJsonDocument::Compact); // ["text"]
    return {secret,
            json.mid(2, json.size() - 4),
            QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2),
            secret.toHex(),
            secret.toHex().toUpper(),
            secret.toBase64(),
            secret.toPercentEncoding()};
}

#endif
