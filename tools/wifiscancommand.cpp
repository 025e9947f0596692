// SPDX-License-Identifier: Apache-2.0
#include "wifiscancommand.h"

#include "accesspointtext.h"
#include "output.h"
#include "progress.h"
#include "scanningcommand.h"
#include "texts.h"

namespace morvek {

namespace {

void writeJson(const QList<WifiAccessPoint> &accessPoints)
{
    QJsonArray array;
    for (const WifiAccessPoint &accessPoint : accessPoints)
        array.append(toJson(accessPoint));
    writeLine(jsonLine(array));
}

void writeList(const QList<WifiAccessPoint> &accessPoints)
{
    QVector<QStringList> rows {{QStringLiteral("SSID"), QStringLiteral("BSSID"), QStringLiteral("SIGNAL"),
                                QStringLiteral("FREQUENCY"), QStringLiteral("CHANNEL"), QStringLiteral("SECURITY")}};
    for (const WifiAccessPoint &accessPoint : accessPoints) {
        const QString frequency =
            accessPoint.frequency() == 0 ? QString() : QStringLiteral("%1 MHz").arg(accessPoint.frequency());
        const QString channel = channelOf(accessPoint) == 0 ? QString() : QString::number(channelOf(accessPoint));
        rows.append({accessPoint.ssid(), accessPoint.bssid(), signalText(accessPoint), frequency, channel,
                     securityName(accessPoint)});
    }
    writeTable(rows);
}

class ScanCommand : public ScanningCommand
{
public:
    using ScanningCommand::ScanningCommand;

protected:
    void onScanStarted() override
    {
        if (!json())
            m_progress = std::make_unique<Progress>(QStringLiteral("Scanning"));
    }

    void onScanned(const QList<WifiAccessPoint> &accessPoints) override
    {
        m_progress.reset();
        if (json())
            writeJson(accessPoints);
        else
            writeList(accessPoints);
        finish(Done);
    }

    void withdraw() override
    {
        m_progress.reset();
        ScanningCommand::withdraw();
    }

private:
    std::unique_ptr<Progress> m_progress;
};

} // namespace

CommandInfo wifiScanCommand()
{
    return {QStringLiteral("wifi scan"),
            {},
            0,
            serviceOptions(),
            {{QString(), QStringLiteral("look for access points, and list them, the strongest first")}},
            QStringLiteral(
                "A hidden name is \"-\", in JSON null, as is what is not known. The security \"unknown\" is one\n"
                "that this unit's library does not know; one that it cannot read at all is \"open\", too. The\n"
                "results may be those of another application's scan. When there are none within 15 seconds,\n"
                "or the time of --timeout, the command ends with code 4."),
            {QStringLiteral("morvekctl wifi scan"),
             QStringLiteral("morvekctl wifi scan --json | jq -r '.[] | select(.security == \"open\").ssid'")},
            createFrom<ScanCommand>};
}

} // namespace morvek
