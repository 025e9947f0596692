// SPDX-License-Identifier: Apache-2.0
#include "wifiscancommand.h"

#include "output.h"
#include "progress.h"
#include "texts.h"
#include "wificommand.h"
#include "wifitext.h"

#include <asyncwifiscanoperation.h>

#include <QtCore/QJsonArray>

namespace morvek {

namespace {

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

class ScanCommand : public WifiCommand
{
public:
    using WifiCommand::WifiCommand;

protected:
    void run() override
    {
        if (!needRadio())
            return;
        setOverdue(QStringLiteral("no scan results have come") + silenceReason());
        setDeadline(ScanTime);
        m_operation.reset(service()->scan());
        connect(m_operation.get(), &AsyncWifiScanOperation::success, this, &ScanCommand::onSuccess);
        connect(m_operation.get(), &AsyncWifiScanOperation::failure, this,
                [this] { fail(m_operation->error().message()); });
        if (!json())
            m_progress = std::make_unique<Progress>(QStringLiteral("Scanning"));
    }

    void withdraw() override { m_progress.reset(); }

private:
    void onSuccess()
    {
        m_progress.reset();
        const QList<WifiAccessPoint> accessPoints = sortedBySignal(m_operation->results());
        if (json()) {
            QJsonArray array;
            for (const WifiAccessPoint &accessPoint : accessPoints)
                array.append(toJson(accessPoint));
            writeLine(jsonLine(array));
        } else {
            writeList(accessPoints);
        }
        finish(Done);
    }

    std::unique_ptr<AsyncWifiScanOperation> m_operation;
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
