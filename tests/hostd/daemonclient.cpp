// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"

#include <QtCore/QDirIterator>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

QByteArray unquoted(const char *text)
{
    return QByteArray(text).replace('\'', '"');
}

} // namespace

QString interfacePath(const char *name)
{
    return QLatin1String(Interfaces) + QLatin1Char('/') + QLatin1String(name);
}

Seen::Seen(const QString &path)
    : object(path, ZopObject::Subscribe, false),
      updates(&object, &ZopObject::attributesChanged)
{
    object.setAttributeCacheEnabled(true);
    updates.clear();
}

QStringList Seen::lines() const
{
    QStringList lines;
    for (int i = 0; i < updates.count(); ++i) {
        const ZopChangeset changes = update(i);
        QStringList words;
        for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
            words += it.key() + QLatin1Char('=') + it.value().toString();
        QStringList removals = changes.removals.values();
        removals.sort();
        for (const QString &name : qAsConst(removals))
            words += QLatin1Char('-') + name;
        lines += words.join(QLatin1Char(' '));
    }
    return lines;
}

Request::Request(ZopObject *control, const char *message, const char *dat)
    : command(control),
      finished(&command, &ZopControlCommand::finished)
{
    command.setMessage(QLatin1String(message));
    if (dat)
        command.setDat(QString::fromUtf8(unquoted(dat)));
    command.start();
}

QString Request::outcome()
{
    if (finished.isEmpty() && !finished.wait(Patience))
        return QStringLiteral("no reply");
    return command.hasError() ? QStringLiteral("%1 %2").arg(command.errorCode()).arg(command.errorString())
                              : QStringLiteral("ok");
}

QByteArrayList everythingReadable(const QString &root, qint64 process)
{
    QByteArrayList contents;
    const auto take = [&contents](const QString &name) {
        QFile file(name);
        if (file.open(QIODevice::ReadOnly))
            contents += file.readAll();
    };
    QDirIterator files(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (files.hasNext())
        take(files.next());
    for (const char *name : {"cmdline", "environ"})
        take(QStringLiteral("/proc/%1/%2").arg(process).arg(QLatin1String(name)));
    return contents;
}

DaemonFixture::DaemonFixture()
    : m_process(std::make_unique<HostdProcess>())
{
    qputenv("ZOP_ROOT", QFile::encodeName(root()));
}

DaemonFixture::~DaemonFixture()
{
    if (QTest::currentTestFailed())
        qInfo("%s", m_process->errors().constData());
}

bool DaemonFixture::makeRoot() const
{
    return QDir().mkpath(root())
        && QFile::setPermissions(root(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void DaemonFixture::kill()
{
    m_process = std::make_unique<HostdProcess>();
}

bool DaemonFixture::serve(const QStringList &arguments)
{
    return m_process->start(root(), QStringList {QStringLiteral("--verbose")} + arguments);
}

bool DaemonFixture::start(const QString &scenario, const QStringList &arguments)
{
    return serve(QStringList {QStringLiteral("--scenario"), scenario} + arguments);
}

bool DaemonFixture::startWith(const char *scenario, const QStringList &arguments)
{
    QFile file(m_folder.filePath(QStringLiteral("scenario.json")));
    const QByteArray json = unquoted(scenario);
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size())
        return false;
    file.close();
    return start(file.fileName(), arguments);
}
