// SPDX-License-Identifier: Apache-2.0
#include "wifiscancommand.h"

#include "accesspointtext.h"
#include "output.h"
#include "progress.h"
#include "scanningcommand.h"
#include "terminationsignals.h"
#include "texts.h"

namespace morvek {

namespace {

void writeJson(const QList<WifiAccessPoint> &accessPoints, bool sureOfOpen)
{
    QJsonArray array;
    for (const WifiAccessPoint &accessPoint : accessPoints)
        array.append(toJson(accessPoint, sureOfOpen));
    writeLine(jsonLine(array));
}

void writeList(const QList<WifiAccessPoint> &accessPoints, bool sureOfOpen)
{
    QVector<QStringList> rows {{QStringLiteral("SSID"), QStringLiteral("BSSID"), QStringLiteral("SIGNAL"),
                                QStringLiteral("FREQUENCY"), QStringLiteral("CHANNEL"), QStringLiteral("SECURITY")}};
    for (const WifiAccessPoint &accessPoint : accessPoints) {
        const QString frequency =
            accessPoint.frequency() == 0 ? QString() : QStringLiteral("%1 MHz").arg(accessPoint.frequency());
        const QString channel = channelOf(accessPoint) == 0 ? QString() : QString::number(channelOf(accessPoint));
        rows.append({accessPoint.ssid(), accessPoint.bssid(), signalText(accessPoint), frequency, channel,
                     securityName(accessPoint, sureOfOpen)});
    }
    writeTable(rows);
}

class ScanCommand : public ScanningCommand
{
public:
    explicit ScanCommand(const CommandLine &line)
        : ScanningCommand(line)
    {
        connect(&m_signals, &TerminationSignals::received, this,
                [this] { fail(QStringLiteral("nothing was scanned: interrupted")); });
    }

protected:
    void onScanStarted() override
    {
        if (!json())
            m_progress = std::make_unique<Progress>(QStringLiteral("Scanning"));
    }

    void onScanned(const QList<WifiAccessPoint> &accessPoints, bool sureOfOpen) override
    {
        m_progress.reset();
        if (json())
            writeJson(accessPoints, sureOfOpen);
        else
            writeList(accessPoints, sureOfOpen);
        finish(Done);
    }

    void withdraw() override { m_progress.reset(); }

private:
    TerminationSignals m_signals;
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
                "that this unit's library does not know. When the library cannot read the security of some\n"
                "access point, each one that looks open is \"open or unknown\". The results may be those of\n"
                "another application's scan. When there are none within %1, or the time of\n"
                "--timeout, the command ends with code 4; by Ctrl-C or a refusal of the daemon with code 1.")
                .arg(inSeconds(ScanTime)),
            {QStringLiteral("morvekctl wifi scan"),
             QStringLiteral("morvekctl wifi scan --json | jq -r '.[] | select(.security == \"open\").ssid'")},
            createFrom<ScanCommand>};
}

} // namespace morvek
