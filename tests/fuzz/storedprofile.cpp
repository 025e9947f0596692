// SPDX-License-Identifier: Apache-2.0
// The file in which the tethering manager keeps its profile, in which "@@" stands for a secret. An own judgement says
// whether it is used; what is used comes back when it is stored, and no reason shows a secret.
#include "hotspotstore.h"
#include "profilecheck.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QTemporaryDir>

using namespace morvek;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QTemporaryDir root;
    const QByteArray content = ProfileCheck::withSecret(Fuzz::bytes(data, size));
    {
        QFile file(root.filePath(QStringLiteral(".morvek-hostd-hotspot.json")));
        Fuzz::expect(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(),
                     "the file can be written");
    }
    HotspotStore store;
    store.setRoot(root.path());
    QString error;
    const QJsonObject profile = store.load(&error);
    const QJsonObject expected = QJsonDocument::fromJson(content).object();
    const bool used = ProfileCheck::isProfile(expected);
    Fuzz::expectEqual(error.isEmpty(), used, "whether the profile is used");
    Fuzz::expect(profile == (used ? expected : QJsonObject()), "the profile");
    ProfileCheck::expectSecrecy(error);
    if (used) {
        Fuzz::expect(store.save(profile, &error), "the profile can be stored");
        Fuzz::expect(store.load(&error) == expected && error.isEmpty(), "what was stored comes back");
    }
    return 0;
}
