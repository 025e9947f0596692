// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_WIFIUNIT_H
#define MORVEK_TEST_WIFIUNIT_H

#include "toldstates.h"

#include <networkservices.h>
#include <testunit.h>
#include <wificontroller.h>
#include <wifinetworkmodel.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

#include <memory>

inline QString townFile()
{
    return QStringLiteral(SCENARIOS "/town.json");
}

/*! A unit whose time stands still, and a controller of its station. */
struct WifiUnit
{
    /*! A scenario of the tests of morvekctl, or a shipped one. */
    bool start(const QString &scenario)
    {
        const QString file = QStringLiteral(SCENARIOS "/%1.json").arg(scenario);
        if (!unit.start(QFile::exists(file) ? file : scenario))
            return false;
        begin();
        return unit.waitForReady(wifi.get());
    }
    void begin()
    {
        services = std::make_unique<morvek::NetworkServices>();
        services->setWatchPause(20);
        wifi = std::make_unique<morvek::WifiController>(services.get());
    }

    /*! The messages of the requests after \a since. */
    QStringList asked(int since = 0)
    {
        QStringList messages;
        const auto requests = unit.requests(since);
        for (const morvek::TestRequest &request : requests)
            messages += request.message;
        return messages;
    }

    /*! Has the daemon tell a connection, as when somebody else has asked for it. */
    bool publishConnection(const char *ssid, const char *lastByte, const char *keyManagement)
    {
        const QJsonObject connection {
            {QStringLiteral("bssid"), QStringLiteral("02:00:00:00:70:") + QLatin1String(lastByte)},
            {QStringLiteral("ssid"), QString::fromUtf8(ssid)},
            {QStringLiteral("key_mgmt"), QLatin1String(keyManagement)},
            {QStringLiteral("pairwise_cipher"),
             QLatin1String(keyManagement) == QLatin1String("NONE") ? "NONE" : "CCMP"},
        };
        const QByteArray text = QJsonDocument(connection).toJson(QJsonDocument::Compact);
        return unit.act(QJsonObject {
            {QStringLiteral("event"), QStringLiteral("set")},
            {QStringLiteral("object"), QStringLiteral("wifi/status")},
            {QStringLiteral("attributes"),
             QJsonObject {{QStringLiteral("wifi_status"),
                           QJsonObject {{QStringLiteral("encoding"), QStringLiteral("json")},
                                        {QStringLiteral("text"), QString::fromUtf8(text)}}}}},
        });
    }

    /*! How many requests there have been. */
    int askedSoFar()
    {
        const auto requests = unit.requests();
        return requests.isEmpty() ? 0 : requests.constLast().number;
    }

    /*! How \a request ends, and the sentence about it: "Refused: …"; "done" alone. */
    QString endOf(morvek::NetworkRequest *request);

    /*! The names in the list of networks, as a driver sees them. */
    QStringList listed() const
    {
        QStringList names;
        const morvek::WifiNetworkModel &networks = *wifi->networks();
        for (int row = 0; row < networks.rowCount(); ++row)
            names += networks.index(row).data(morvek::WifiNetworkModel::SsidRole).toString();
        return names;
    }
    QVariant told(const QString &ssid, int role) const
    {
        const morvek::WifiNetworkModel &networks = *wifi->networks();
        return networks.index(networks.rowOf(ssid)).data(role);
    }

    morvek::TestUnit unit;
    std::unique_ptr<morvek::NetworkServices> services;
    std::unique_ptr<morvek::WifiController> wifi;
};

/*! \a text without directional isolates. */
inline QString plain(QString text)
{
    for (const int isolate : {0x2066, 0x2067, 0x2068, 0x2069})
        text.remove(QChar(isolate));
    return text;
}

inline QString WifiUnit::endOf(morvek::NetworkRequest *request)
{
    constexpr int LongestSentence = 120;
    QString end = unit.endOf(request);
    if (request->sentence().size() > LongestSentence)
        end += QStringLiteral(" with too long a sentence");
    if (!request->sentence().isEmpty())
        end += QStringLiteral(": ") + plain(request->sentence());
    return end;
}

#endif
