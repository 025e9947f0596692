// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"

#include <QtCore/QTemporaryDir>

using morvek::ZopObject;

namespace {

/*! Milliseconds; reached only by what has failed. */
int patience()
{
    bool ok = false;
    const int wanted = qEnvironmentVariableIntValue("CONTRACT_PATIENCE", &ok);
    return ok ? wanted : 20000;
}

} // namespace

QString testFolder()
{
    return QStringLiteral("/zop/contract-%1/%2/")
        .arg(QCoreApplication::applicationPid())
        .arg(QLatin1String(QTest::currentTestFunction()));
}

QString testPath(const char *name)
{
    return testFolder() + QLatin1String(name);
}

bool waitUntil(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, patience());
}

bool publish(const QString &path, const QString &text)
{
    return ZopObject::create(path, changesFrom(text));
}

bool set(ZopObject &object, const QString &text)
{
    return object.setAttributes(changesFrom(text));
}

bool set(const QString &path, const QString &text)
{
    ZopObject object(path, ZopObject::ReadWrite, false);
    return set(object, text);
}

QString peerOf(const QStringList &requests, const QString &msg)
{
    for (const QString &request : requests) {
        if (request.contains(QStringLiteral("msg=%1 ").arg(msg)))
            return request.section(QStringLiteral("peer="), 1).chopped(1);
    }
    return QString();
}

int runContractTest(QObject *test, int argc, char **argv)
{
    const QTemporaryDir root;
    qputenv("ZOP_ROOT", QFile::encodeName(root.path()));
    qputenv("KREL_VERBOSITY", "7");
    QCoreApplication application(argc, argv);
    return QTest::qExec(test, argc, argv);
}
