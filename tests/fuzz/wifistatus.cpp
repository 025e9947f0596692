// SPDX-License-Identifier: Apache-2.0
// What the Wi-Fi daemon tells and replies while an application asks for this and that. A script: "power TEXT",
// "status JSON", "results JSON", "event TEXT" and "remove NAME" of the status object; "on", "off", "scan", "join KIND",
// "leave" of the application; "ok N TEXT" and "err N TEXT" end the command N. A model says which signals come, which
// requests are sent and how each operation ends.
#include "fuzz.h"
#include "logcapture.h"
#include "wifiproviderfixture.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace morvek;

namespace {

struct Scan
{
    ScanPointer operation;
    std::unique_ptr<ScanEnd> end;
    QString expected;
};

struct Join
{
    ConnectPointer operation;
    std::unique_ptr<ConnectEnd> end;
    QString expected;
};

int oneOf(const QString &text, std::initializer_list<std::pair<const char *, int>> words)
{
    for (const auto &word : words) {
        if (text == QLatin1String(word.first))
            return word.second;
    }
    return 0;
}

class Play
{
public:
    explicit Play(const QByteArray &input)
        : m_saysPasskey(input.contains("correct horse"))
    {
    }

    void line(const Fuzz::Line &line)
    {
        if (line.word == "power")
            power(line.rest);
        else if (line.word == "status")
            status(line.rest);
        else if (line.word == "results")
            results(line.rest);
        else if (line.word == "event")
            event(line.rest);
        else if (line.word == "remove")
            remove(line.rest);
        else if (line.word == "ok" || line.word == "err")
            answer(line);
        else
            request(line);
        check();
    }

    void end() const
    {
        for (const Scan &scan : m_scans)
            Fuzz::expectEqual(scan.end->text(), scan.expected, "how a scan ends");
        for (const Join &join : m_joins)
            Fuzz::expectEqual(join.end->text(), join.expected, "how a connect ends");
    }

private:
    void power(const QByteArray &value)
    {
        WifiDaemon::change("wifi_power", raw(value));
        if (value != "on" && value != "off")
            return;
        if (m_powered != (value == "on"))
            m_events.append(QLatin1String(value));
        m_powered = value == "on";
    }

    void connection(const QJsonObject &told)
    {
        m_access.bssid = told.value(QLatin1String("bssid")).toString();
        m_access.ssid = told.value(QLatin1String("ssid")).toString();
        const QString key = told.value(QLatin1String("key_mgmt")).toString();
        const QString cipher = told.value(QLatin1String("pairwise_cipher")).toString();
        m_access.protocols =
            oneOf(key, {{"NONE", 1}, {"WPA-PSK", 4}, {"WPA-EAP", 4}, {"WPA2-PSK", 8}, {"WPA2-EAP", 8}});
        m_access.keyManagement =
            oneOf(key, {{"NONE", 1}, {"WPA-PSK", 2}, {"WPA-EAP", 4}, {"WPA2-PSK", 2}, {"WPA2-EAP", 4}});
        m_access.ciphers = oneOf(cipher, {{"NONE", 1}, {"TKIP", 4}, {"CCMP", 2}});
    }

    void status(const QByteArray &json)
    {
        WifiDaemon::change("wifi_status", raw(json));
        connection(QJsonDocument::fromJson(json).object());
        if (!m_access.bssid.isEmpty())
            endJoin(QLatin1String("success ") + m_access.bssid);
        follow();
    }

    void remove(const QByteArray &name)
    {
        ZopDouble::publish(QLatin1String(WifiDaemon::Status), {}, {Fuzz::text(name)});
        if (!name.startsWith("wifi_status"))
            return;
        m_access = {QString(), QString(), 1, 1, 1};
        follow();
    }

    void follow()
    {
        const bool connected = !m_access.bssid.isEmpty();
        if (connected != m_connected)
            m_events.append(connected ? QStringLiteral("connected") : QStringLiteral("disconnected"));
        m_connected = connected;
    }

    void results(const QByteArray &json)
    {
        WifiDaemon::change("scan_results", raw(json));
        const QJsonArray elements = QJsonDocument::fromJson(Fuzz::text(json).toUtf8()).array();
        QStringList bssids;
        for (const QJsonValue &element : elements)
            bssids.append(element.toObject().value(QLatin1String("bssid")).toString());
        for (Scan &scan : m_scans) {
            if (scan.expected.isEmpty())
                scan.expected = QLatin1String("success ") + bssids.join(QLatin1Char(','));
        }
    }

    void event(const QByteArray &value)
    {
        WifiDaemon::change("last_event", raw(value));
        if (Fuzz::text(value).toUtf8().contains("CTRL-EVENT-SSID-TEMP-DISABLED"))
            endJoin(QStringLiteral("failure -1 Failed to connect to Access Point"));
    }

    void endJoin(const QString &expected)
    {
        for (Join &join : m_joins) {
            if (join.expected.isEmpty()) {
                join.expected = expected;
                return;
            }
        }
    }

    bool isJoining() const
    {
        return std::any_of(m_joins.begin(), m_joins.end(), [](const Join &join) { return join.expected.isEmpty(); });
    }

    void request(const Fuzz::Line &line)
    {
        if (line.word == "on" || line.word == "off") {
            line.word == "on" ? m_fixture.provider->powerOn() : m_fixture.provider->powerOff();
            m_sent.append(QLatin1String("wifi_power ") + QLatin1String(line.word));
        } else if (line.word == "scan") {
            ScanPointer operation = m_fixture.scan();
            auto *pending = operation.get();
            m_scans.push_back({std::move(operation), std::make_unique<ScanEnd>(pending), QString()});
            m_sent.append(QStringLiteral("scan"));
        } else if (line.word == "join") {
            join(line.rest);
        } else if (line.word == "leave") {
            m_fixture.provider->disconnectAccessPoint();
            endJoin(QStringLiteral("failure -1 Cancelling connect operation, due to issued disconnect command"));
            m_sent.append(QStringLiteral("wnet_disableall"));
        }
    }

    void join(const QByteArray &kind)
    {
        const bool busy = isJoining();
        const bool open = kind == "open";
        const bool valid = kind != "wrong";
        const WifiConnectionConfig config = open
            ? wifiConfig(QStringLiteral("Guests"), QString(), 0x1, 0x1)
            : wifiConfig(QStringLiteral("Home"), QStringLiteral("correct horse"), 0x2, valid ? 0x8 : 0x2);
        ConnectPointer operation = m_fixture.join(config);
        auto *pending = operation.get();
        const char *expected = !valid ? "failure -1 Wifi Configuration provided is not valid"
            : busy                    ? "failure -1 Another connect operation in progress."
                                      : "";
        m_joins.push_back({std::move(operation), std::make_unique<ConnectEnd>(pending), QLatin1String(expected)});
        if (valid && !busy)
            m_sent.append(open ? QStringLiteral(R"(wnet_new {"key_mgmt":"NONE","ssid":"Guests"})")
                               : QLatin1String(NewHome));
    }

    void answer(Fuzz::Line line)
    {
        const bool refused = line.word == "err";
        const int index = line.next().toInt();
        if (index < 0 || index >= m_sent.size() || m_answered.contains(index))
            return;
        m_answered.insert(index);
        const QString reply = Fuzz::text(line.rest);
        const QString sent = m_sent.at(index);
        if (sent.startsWith(QLatin1String("wnet_new"))) {
            if (refused)
                endJoin(QLatin1String("failure -1 ") + reply);
            m_sent.append(QLatin1String("wnet_select ") + (refused ? QString() : reply));
        } else if (sent.startsWith(QLatin1String("wnet_select")) && refused) {
            endJoin(QLatin1String("failure -1 ") + reply);
        }
        if (refused)
            ZopDouble::answerError(index, 5, reply);
        else
            ZopDouble::answer(index, ZopVariant(reply));
    }

    void check()
    {
        const WifiProvider &provider = *m_fixture.provider;
        Fuzz::expectEqual(m_fixture.events->take(), m_events, "the signals");
        m_events.clear();
        Fuzz::expectEqual(sent(), m_sent, "the requests");
        Fuzz::expectEqual(provider.powered(), m_powered, "whether the radio is on");
        Fuzz::expectEqual(provider.connected(), m_connected, "whether it is connected");
        const WifiAccessPoint accessPoint = provider.connectedAccessPoint();
        Fuzz::expectEqual(accessPoint.bssid(), m_access.bssid, "the bssid");
        Fuzz::expectEqual(accessPoint.ssid(), m_access.ssid, "the ssid");
        Fuzz::expectEqual(int(accessPoint.securityProtocols()), m_access.protocols, "the protocols");
        Fuzz::expectEqual(int(accessPoint.keyManagementTypes()), m_access.keyManagement, "the key management");
        Fuzz::expectEqual(int(accessPoint.ciphers()), m_access.ciphers, "the ciphers");
        Fuzz::expect(accessPoint.rssi() == 0 && accessPoint.frequency() == 0 && accessPoint.serviceSet() == 2,
                     "what a connection does not tell");
        const QStringList lines = m_log.take();
        for (const QString &one : lines)
            Fuzz::expect(m_saysPasskey || !one.contains(QLatin1String("correct horse")), "the log shows no passkey");
    }

    struct Access
    {
        QString bssid;
        QString ssid;
        int protocols = 1;
        int keyManagement = 1;
        int ciphers = 1;
    };

    bool m_saysPasskey;
    LogCapture m_log {7};
    WifiProviderFixture m_fixture;
    bool m_powered = false;
    bool m_connected = false;
    Access m_access;
    std::vector<Scan> m_scans;
    std::vector<Join> m_joins;
    QStringList m_events;
    QStringList m_sent;
    QSet<int> m_answered;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ZopDouble::reset();
    Play play(Fuzz::bytes(data, size));
    const QList<Fuzz::Line> lines = Fuzz::script(data, size, 40);
    for (const Fuzz::Line &line : lines)
        play.line(line);
    play.end();
    return 0;
}
