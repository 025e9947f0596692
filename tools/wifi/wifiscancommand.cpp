// SPDX-License-Identifier: Apache-2.0
#include "wifiscancommand.h"

#include "accesspointtext.h"
#include "output.h"
#include "progress.h"
#include "scanningcommand.h"
#include "table.h"
#include "terminationsignals.h"
#include "texts.h"

#include <publishedsecurity.h>

namespace morvek {

namespace {

enum Column { InUse, Ssid, Bssid, Signal, Frequency, Channel, Security };

bool isSame(const WifiAccessPoint &accessPoint, const WifiAccessPoint &used)
{
    return !used.isEmpty() && accessPoint.bssid() == used.bssid();
}

void writeJson(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &security,
               const WifiAccessPoint &used)
{
    QJsonArray array;
    for (const WifiAccessPoint &accessPoint : accessPoints) {
        QJsonObject object = toJson(accessPoint, security.ofScanned(accessPoint));
        object.insert(QStringLiteral("inUse"), isSame(accessPoint, used));
        array.append(object);
    }
    writeLine(jsonLine(array));
}

void writeList(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &security,
               const WifiAccessPoint &used)
{
    const QString blank(QLatin1Char(' '));
    Table table {{blank, QStringLiteral("SSID"), QStringLiteral("BSSID"), QStringLiteral("SIGNAL"),
                  QStringLiteral("FREQUENCY"), QStringLiteral("CHANNEL"), QStringLiteral("SECURITY")}};
    for (const WifiAccessPoint &accessPoint : accessPoints) {
        const QString frequency =
            accessPoint.frequency() == 0 ? QString() : QStringLiteral("%1 MHz").arg(accessPoint.frequency());
        const QString channel = channelOf(accessPoint) == 0 ? QString() : QString::number(channelOf(accessPoint));
        const Cell mark = isSame(accessPoint, used) ? Cell(QStringLiteral("*"), Tone::Good) : Cell(blank);
        table.append({mark,
                      accessPoint.ssid(),
                      accessPoint.bssid(),
                      {signalText(accessPoint), signalTone(accessPoint)},
                      frequency,
                      channel,
                      security.ofScanned(accessPoint).name()});
    }
    writeTable(table, {Frequency, Bssid, Channel});
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

    void onScanned(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &security) override
    {
        m_progress.reset();
        const WifiAccessPoint used = service()->connectedAccessPoint();
        if (json())
            writeJson(accessPoints, security, used);
        else
            writeList(accessPoints, security, used);
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
    return {
        QStringLiteral("wifi scan"),
        {},
        0,
        serviceOptions(),
        {{QString(), QStringLiteral("look for access points, and list them, the strongest first")}},
        QStringLiteral("A hidden name is \"-\", in JSON null, as is what is not known. The security is what the\n"
                       "daemon tells, WPA3 and OWE (encrypted without a passkey) included, which this unit's library\n"
                       "does not know. The results may be those of another application's scan. When there are none\n"
                       "within %1, or the time of --timeout, the command ends with code 4; by Ctrl-C or a\n"
                       "refusal of the daemon with code 1.")
            .arg(inSeconds(ScanTime)),
        {QStringLiteral("morvekctl wifi scan"),
         QStringLiteral("morvekctl wifi scan --json | jq -r '.[] | select(.security == \"open\").ssid'")},
        createFrom<ScanCommand>};
}

} // namespace morvek
