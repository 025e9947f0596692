// SPDX-License-Identifier: Apache-2.0
#include "daemoncase.h"

#include <zopobject.h>

#include <QtTest/QtTest>

using namespace morvek;

void DaemonCase::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    m_daemon = std::make_unique<Daemon>(m_root->path());
    m_told.clear();
    qputenv("ZOP_ROOT", m_root->path().toUtf8());
}

void DaemonCase::cleanup()
{
    m_daemon.reset();
    m_root.reset();
}

bool DaemonCase::publish(const QString &object, const QString &attribute, const ZopVariant &value)
{
    ZopChangeset changes;
    changes.assignments.insert(attribute, value);
    return ZopObject(object, ZopObject::Publish, false).setAttributes(changes);
}

QString DaemonCase::published(const QString &attribute) const
{
    ZopObject object(m_statusObject, ZopObject::Subscribe, false);
    object.setAttributeCacheEnabled(true);
    return object.attribute(attribute).toString();
}

bool DaemonCase::waitForDaemon(const QString &line)
{
    return QTest::qWaitFor(
        [&] {
            m_told += m_daemon->errors();
            return m_told.contains(line);
        },
        60000);
}
