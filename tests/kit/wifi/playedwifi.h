// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_PLAYEDWIFI_H
#define MORVEK_TEST_PLAYEDWIFI_H

#include "playeddaemon.h"

#include <networkservices.h>
#include <wificontroller.h>
#include <zopchangeset.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QStringList>
#include <QtTest/QtTest>

#include <algorithm>
#include <memory>

/*!
 * A Wi-Fi daemon in this process, connected to "Home" at first, with that and "Garage" in range. It answers, and tells
 * what scans find; what comes of anything else its test says.
 */
class PlayedWifi : public QObject
{
public:
    PlayedWifi() { comeBack(); }

    void die() { m_daemon.reset(); }
    void comeBack()
    {
        m_daemon = std::make_unique<PlayedDaemon>(PlayedDaemon::Wifi);
        connect(&m_daemon->control(), &morvek::ZopObject::attributesChanged, this, &PlayedWifi::hear);
        tell({{QStringLiteral("wifi_power"), QStringLiteral("on")}, {ConnectionName, connection("Home", "01")}});
    }

    /*! What was requested: "scan", "wnet_new Garage", "wnet_select 7", "wifi_power off". */
    QStringList requests;
    /*! The messages that are not answered, nor heeded. */
    QStringList silentTo;
    QStringList inRange {QStringLiteral("Home"), QStringLiteral("Garage")};
    QString refusal; //!< of "wnet_new", unless it is empty

    int count(const char *request) const
    {
        return int(std::count_if(requests.begin(), requests.end(),
                                 [request](const QString &one) { return one.startsWith(QLatin1String(request)); }));
    }
    bool waitFor(const char *request, int nth = 1) const
    {
        return QTest::qWaitFor([&] { return count(request) >= nth; }, 10000);
    }

    using Attributes = QMap<QString, morvek::ZopVariant>;
    void tell(const Attributes &attributes, const QSet<QString> &removals = {})
    {
        m_daemon->status().setAttributes({attributes, removals});
    }
    void tellEvent(const char *event) { tell({{QStringLiteral("last_event"), QString::fromLatin1(event)}}); }
    void tellConnection(const char *ssid, const char *lastByte)
    {
        tell({{ConnectionName, connection(ssid, lastByte)}});
    }
    void tellLeft() { tell({}, {ConnectionName}); }
    void tellOff() { tell({{QStringLiteral("wifi_power"), QStringLiteral("off")}}, {ConnectionName}); }
    void tellOn() { tell({{QStringLiteral("wifi_power"), QStringLiteral("on")}}); }
    void tellScan()
    {
        QJsonArray results;
        for (const QString &ssid : qAsConst(inRange))
            results += QJsonObject {
                {QStringLiteral("bssid"),
                 QStringLiteral("02:00:00:00:60:%1").arg(results.size() + 1, 2, 10, QLatin1Char('0'))},
                {QStringLiteral("ssid"), ssid},
                {QStringLiteral("signal_level"), QStringLiteral("-50")},
                {QStringLiteral("frequency"), QStringLiteral("2412")},
                {QStringLiteral("flags"), QJsonArray {QStringLiteral("WPA2-PSK-CCMP"), QStringLiteral("ESS")}},
            };
        tell({{QStringLiteral("scan_results"),
               QString::fromUtf8(QJsonDocument(results).toJson(QJsonDocument::Compact))}});
    }

private:
    const QString ConnectionName = QStringLiteral("wifi_status");

    static morvek::ZopVariant connection(const char *ssid, const char *lastByte)
    {
        return morvek::ZopVariant(QJsonObject {
            {QStringLiteral("bssid"), QStringLiteral("02:00:00:00:60:") + QLatin1String(lastByte)},
            {QStringLiteral("ssid"), QLatin1String(ssid)},
            {QStringLiteral("key_mgmt"), QStringLiteral("WPA2-PSK")},
            {QStringLiteral("pairwise_cipher"), QStringLiteral("CCMP")},
        });
    }

    void hear(const morvek::ZopChangeset &request)
    {
        const QString message = request.assignments.value(QStringLiteral("msg")).toString();
        const morvek::ZopVariant dat = request.assignments.value(QStringLiteral("dat"));
        const bool isNew = message == QLatin1String("wnet_new");
        const QString words = isNew ? dat.toJson().object().value(QLatin1String("ssid")).toString() : dat.toString();
        requests += words.isEmpty() ? message : message + QLatin1Char(' ') + words;
        if (silentTo.contains(message))
            return;
        morvek::ZopChangeset reply {{{QStringLiteral("res"), message}, {QStringLiteral("err"), QStringLiteral("0")}},
                                    {}};
        if (isNew)
            reply.assignments.insert(QStringLiteral("dat"), QStringLiteral("7"));
        if (isNew && !refusal.isEmpty())
            reply.assignments.insert(QStringLiteral("errmsg"), refusal);
        for (const char *key : {"id", "peer"})
            reply.assignments.insert(QLatin1String(key), request.assignments.value(QLatin1String(key)));
        m_daemon->control().setAttributes(reply);
        if (message == QLatin1String("scan"))
            tellScan();
    }

    std::unique_ptr<PlayedDaemon> m_daemon;
};

/*! A controller, its services, and the daemon that they find. */
struct PlayedStation
{
    PlayedWifi daemon;
    std::unique_ptr<morvek::NetworkServices> services {new morvek::NetworkServices};
    std::unique_ptr<morvek::WifiController> wifi {new morvek::WifiController(services.get())};

    bool waitForReady() const
    {
        return QTest::qWaitFor([this] { return wifi->state() == morvek::WifiController::Connected; }, 10000);
    }
};

#endif
