// SPDX-License-Identifier: Apache-2.0
#include "zoproot.h"

#include "root.h"
#include "rootobjection.h"

#include <QtCore/QFile>

#include <sys/stat.h>

namespace morvek {

ZopRoot ZopRoot::look()
{
    const QByteArray root = Root::folder();
    const QString path = QFile::decodeName(root);
    struct stat status = {};
    const RootObjection objection = RootObjection::to(root, &status);
    if (!objection.reason.isEmpty())
        return {Unusable, path, objection.reason, objection.mend};
    if (S_ISDIR(status.st_mode))
        return {Ready, path, QString(), QString()};

    const QByteArray parent = root.left(qMax(1, root.lastIndexOf('/')));
    if (stat(parent.constData(), &status) != 0 || !S_ISDIR(status.st_mode))
        return {Unusable, path,
                QStringLiteral("the root \"%1\" cannot be made: there is no folder \"%2\"")
                    .arg(path, QFile::decodeName(parent)),
                QStringLiteral("make that folder, or set ZOP_ROOT to another root")};
    return {Missing, path, QStringLiteral("the root \"%1\" does not exist").arg(path),
            QStringLiteral("start morvek-hostd, which makes it, or set ZOP_ROOT to the root of one that runs")};
}

} // namespace morvek
