// SPDX-License-Identifier: Apache-2.0
#include "hotspotcase.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

using namespace morvek;

bool HotspotCase::start(const QByteArray &faults, const QStringList &arguments)
{
    QFile shipped(QStringLiteral(SCENARIOS "/hotspot.json"));
    QFile file(m_root->filePath(QStringLiteral("scenario.json")));
    if (!shipped.open(QFile::ReadOnly) || !file.open(QFile::WriteOnly))
        return false;
    QJsonObject scenario = QJsonDocument::fromJson(shipped.readAll()).object();
    scenario.insert(QStringLiteral("faults"), QJsonDocument::fromJson('[' + faults + ']').array());
    file.write(QJsonDocument(scenario).toJson());
    file.close();
    return m_daemon->publish(file.fileName(), arguments);
}

QByteArray HotspotCase::tellsProfile(const QByteArray &hotspot, int skip)
{
    const QJsonObject profile {{QStringLiteral("lanprofile"), QJsonDocument::fromJson(hotspot).object()}};
    const QJsonObject dat {{QStringLiteral("encoding"), QStringLiteral("json")},
                           {QStringLiteral("text"), QString::fromUtf8(QJsonDocument(profile).toJson())}};
    const QJsonObject fault {{QStringLiteral("fault"), QStringLiteral("answer")},
                             {QStringLiteral("message"), QStringLiteral("retrieve_profile")},
                             {QStringLiteral("skip"), skip},
                             {QStringLiteral("err"), QStringLiteral("0")},
                             {QStringLiteral("dat"), dat}};
    return QJsonDocument(fault).toJson();
}
