// SPDX-License-Identifier: Apache-2.0
#include "radiomanager.h"

#include "air.h"
#include "patience.h"

#include <QtTest/QtTest>

RadioManager::~RadioManager()
{
    m_supplicant.kill();
    m_supplicant.waitForFinished();
}

void RadioManager::start()
{
    m_supplicant.start(QStringLiteral("wpa_supplicant"),
                       {QStringLiteral("-u"), QStringLiteral("-t"), QStringLiteral("-f"),
                        RealManager::folder() + QStringLiteral("/supplicant.log")});
    QVERIFY(m_supplicant.waitForStarted());
    QVERIFY(m_manager.start());
    shell("nmcli connection add type ethernet ifname up0 con-name Cable");
    QTRY_COMPARE_WITH_TIMEOUT(Air::activeProfiles(), QByteArray("Cable"), Patience);
    QTRY_VERIFY_WITH_TIMEOUT(shell("nmcli -t -g GENERAL.STATE device show wlan0").startsWith("30"), Patience);
}
