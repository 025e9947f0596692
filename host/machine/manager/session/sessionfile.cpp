// SPDX-License-Identifier: Apache-2.0
#include "sessionfile.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <algorithm>

namespace morvek {

namespace {

// No object's name begins with a dot.
const QString Start = QStringLiteral(".morvek-hostd-session.");
const QString End = QStringLiteral(".json");

QString fileName(const QVector<Service> &served)
{
    QStringList names;
    for (const Service service : served)
        names += nameOf(service);
    return Start + names.join(QLatin1Char('.')) + End;
}

} // namespace

SessionFile::SessionFile(const QString &root, const QVector<Service> &served)
    : m_folder(root),
      m_served(served),
      m_file(QFile::encodeName(root + QLatin1Char('/') + fileName(served)))
{
}

SessionNotes SessionFile::takeUp(QStringList *unread)
{
    SessionNotes notes;
    QVector<PrivateFile> others;
    const QStringList files =
        QDir(m_folder).entryList({Start + QLatin1Char('*') + End}, QDir::AllEntries | QDir::Hidden);
    for (const QString &name : files) {
        const QStringList services = name.split(QLatin1Char('.'));
        const bool hasEnded = std::any_of(m_served.begin(), m_served.end(),
                                          [&services](Service service) { return services.contains(nameOf(service)); });
        if (!hasEnded)
            continue;
        const PrivateFile file(QFile::encodeName(m_folder + QLatin1Char('/') + name));
        QString error;
        const QByteArray content = file.read(&error);
        if (!error.isEmpty())
            *unread += QStringLiteral("\"%1\": %2").arg(file.path(), error);
        else if (file.path() != path())
            others += file;
        notes.add(SessionNotes::fromJson(QJsonDocument::fromJson(content).object()));
    }
    QString error;
    if (!others.isEmpty() && write(notes, &error)) {
        for (const PrivateFile &file : qAsConst(others))
            file.remove(&error);
    }
    return notes;
}

bool SessionFile::write(const SessionNotes &notes, QString *error)
{
    return notes.isEmpty() ? m_file.remove(error) : m_file.write(QJsonDocument(notes.toJson()).toJson(), error);
}

} // namespace morvek
