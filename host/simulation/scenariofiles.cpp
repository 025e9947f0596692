// SPDX-License-Identifier: Apache-2.0
#include "scenariofiles.h"

#include "scenarioreader.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

/*! Of a library that is linked statically, nobody else does it. */
static void takeShippedScenarios()
{
    Q_INIT_RESOURCE(scenarios);
}

namespace morvek {

namespace {

// A scenario is written by hand; whatever is larger is a mistake, or a device that never ends.
constexpr qint64 LargestFile = 8 * 1024 * 1024;

const auto Suffix = QLatin1String(".json");

QString shippedFolder()
{
    takeShippedScenarios();
    return QStringLiteral(":/scenarios/");
}

QString fileOf(const QString &nameOrFile)
{
    const bool file = nameOrFile.contains(QLatin1Char('/')) || nameOrFile.endsWith(Suffix);
    return file ? nameOrFile : shippedFolder() + nameOrFile + Suffix;
}

bool read(const QString &fileName, QByteArray *json, QString *error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return false;
    }
    *json = file.read(LargestFile + 1);
    if (file.error() != QFileDevice::NoError)
        *error = file.errorString();
    else if (json->size() > LargestFile)
        *error = QStringLiteral("is larger than %1 MiB").arg(LargestFile / 1024 / 1024);
    return error->isEmpty();
}

} // namespace

QStringList ScenarioFiles::shipped()
{
    QStringList names = QDir(shippedFolder()).entryList({QLatin1Char('*') + Suffix}, QDir::Files, QDir::Name);
    for (QString &name : names)
        name.chop(Suffix.size());
    return names;
}

bool ScenarioFiles::load(const QString &nameOrFile, Scenario *scenario, QString *error)
{
    error->clear();
    const QString fileName = fileOf(nameOrFile);
    QByteArray json;
    if (fileName != nameOrFile && !QFile::exists(fileName))
        *error = QStringLiteral("no such scenario (shipped: %1; a file's name ends in .json or contains a /)")
                     .arg(shipped().join(QLatin1String(", ")));
    else if (read(fileName, &json, error))
        readScenario(json, scenario, error);
    if (!error->isEmpty())
        error->prepend(nameOrFile + QLatin1String(": "));
    return error->isEmpty();
}

} // namespace morvek
