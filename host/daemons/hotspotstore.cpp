// SPDX-License-Identifier: Apache-2.0
#include "hotspotstore.h"

#include "hotspotprofile.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

namespace morvek {

namespace {

// No object's name begins with a dot.
const char FileName[] = "/.morvek-hostd-hotspot.json";

} // namespace

void HotspotStore::setRoot(const QString &root)
{
    m_file = PrivateFile(QFile::encodeName(root) + FileName);
}

QString HotspotStore::file() const
{
    return m_file.path();
}

QJsonObject HotspotStore::load(QString *error) const
{
    const QByteArray content = m_file.read(error);
    QJsonObject profile;
    if (error->isEmpty() && !content.isEmpty()) {
        QJsonParseError parseError;
        profile = QJsonDocument::fromJson(content, &parseError).object();
        *error = parseError.error != QJsonParseError::NoError ? parseError.errorString()
                                                              : HotspotProfile::check(profile).text;
    }
    if (error->isEmpty())
        return profile;
    error->prepend(QStringLiteral("the stored profile \"%1\" is not used: ").arg(file()));
    return {};
}

bool HotspotStore::save(const QJsonObject &profile, QString *error) const
{
    return m_file.write(QJsonDocument(profile).toJson(), error);
}

bool HotspotStore::forget(QString *error) const
{
    if (m_file.remove(error))
        return true;
    error->prepend(QStringLiteral("cannot remove the stored profile \"%1\": ").arg(file()));
    return false;
}

} // namespace morvek
