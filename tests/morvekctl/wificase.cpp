// SPDX-License-Identifier: Apache-2.0
#include "wificase.h"

#include <zopobject.h>

#include <QtTest/QtTest>

using namespace morvek;

void WifiCase::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    m_daemon = std::make_unique<Daemon>(m_root->path());
    m_told.clear();
    qputenv("ZOP_ROOT", m_root->path().toUtf8());
}

void WifiCase::cleanup()
{
    m_daemon.reset();
    m_root.reset();
}

bool WifiCase::publish(const QString &attribute, const ZopVariant &value)
{
    ZopChangeset changes;
    changes.assignments.insert(attribute, value);
    return ZopObject(QStringLiteral("/zop/services/wifi/status"), ZopObject::Publish, false).setAttributes(changes);
}

bool WifiCase::waitForDaemon(const QString &line)
{
    return QTest::qWaitFor(
        [&] {
            m_told += m_daemon->errors();
            return m_told.contains(line);
        },
        60000);
}
