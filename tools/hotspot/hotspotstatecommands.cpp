// SPDX-License-Identifier: Apache-2.0
#include "hotspotstatecommands.h"

#include "hotspotcommand.h"
#include "hotspottext.h"
#include "output.h"
#include "progress.h"
#include "terminationsignals.h"
#include "texts.h"

#include <asynchotspotenableoperation.h>

namespace morvek {

namespace {

class StatusCommand : public HotspotCommand
{
public:
    using HotspotCommand::HotspotCommand;

protected:
    void run() override
    {
        fetch(QStringLiteral("the profile was not read"), [this](const WifiHotspot &profile) { tell(profile); });
    }

private:
    void tell(const WifiHotspot &profile)
    {
        const bool enabled = service()->enabled();
        if (json())
            writeLine(jsonLine(
                QJsonObject {{QStringLiteral("enabled"), enabled}, {QStringLiteral("profile"), toJson(profile)}}));
        else
            writeTable(Table {{QStringLiteral("Hotspot"), {onOrOff(enabled), enabled ? Tone::Good : Tone::Plain}}}
                       + profileRows(profile));
        finish(Done);
    }
};

class EnableCommand : public HotspotCommand
{
public:
    EnableCommand(const CommandLine &line, bool on)
        : HotspotCommand(line),
          m_on(on)
    {
        connect(&m_signals, &TerminationSignals::received, this,
                [this] { fail(QStringLiteral("interrupted: ") + outlook()); });
    }

protected:
    void run() override
    {
        const bool isSo = service()->enabled() == m_on;
        if (isSo && m_on) {
            tell(QStringLiteral("The hotspot is on already."));
            return;
        }
        if (!json())
            m_progress = std::make_unique<Progress>(QStringLiteral("Switching the hotspot ") + onOrOff(m_on));
        // To stop it is asked for in any case: somebody may have had it started, which the status does not tell yet.
        m_still = isSo ? QStringLiteral("the hotspot is off, but may be starting")
                       : QStringLiteral("the hotspot is still %1").arg(onOrOff(!m_on));
        connect(service(), &HotSpotService::enabledChanged, this, [this](bool enabled) {
            if (enabled == m_on)
                tellState();
        });
        if (m_on) // it starts with the profile that was read last
            fetch(m_still + QLatin1String(", as its profile was not read"),
                  [this](const WifiHotspot &profile) { requestWith(profile); });
        else
            request();
    }

    void withdraw() override { m_progress.reset(); }

private:
    /*! What may come of it when nobody waits any more. */
    QString outlook() const
    {
        if (!m_operation)
            return QStringLiteral("the hotspot was not switched");
        return m_on ? QStringLiteral("the hotspot may still start, unless 'morvekctl hotspot off' stops it")
                    : QStringLiteral("the hotspot may still stop");
    }

    void requestWith(const WifiHotspot &profile)
    {
        const QString gap = gapOf(profile);
        if (gap.isEmpty())
            request();
        else
            fail(m_still + QStringLiteral(": its profile has %1, see 'morvekctl help hotspot set'").arg(gap));
    }

    void request()
    {
        awaitAnswer(m_still + QLatin1String("; the tethering daemon has not answered"));
        m_operation.reset(service()->setEnabled(m_on));
        connect(m_operation.get(), &AsyncHotspotEnableOperation::success, this, &EnableCommand::awaitChange);
        connect(m_operation.get(), &AsyncHotspotEnableOperation::failure, this,
                [this] { fail(sentence(m_still, m_operation->error())); });
    }

    void awaitChange()
    {
        if (service()->enabled() == m_on) {
            tellState();
            return;
        }
        setOverdue(m_still + QLatin1String(", though the tethering daemon has accepted to switch it"));
        setDeadline(ChangeTime);
    }

    void tellState() { tell(QStringLiteral("The hotspot is %1.").arg(onOrOff(m_on))); }

    void tell(const QString &text)
    {
        if (isFinished())
            return;
        m_progress.reset();
        writeLine(json() ? jsonLine(QJsonObject {{QStringLiteral("enabled"), m_on}}) : text);
        finish(Done);
    }

    TerminationSignals m_signals;
    const bool m_on;
    std::unique_ptr<Progress> m_progress;
    QString m_still; //!< what is so when the command fails
    std::unique_ptr<AsyncHotspotEnableOperation> m_operation;
};

template<bool on>
std::unique_ptr<Command> createEnable(const CommandLine &line, QString *)
{
    return std::make_unique<EnableCommand>(line, on);
}

QString enableDetails()
{
    return QStringLiteral("When the tethering daemon refuses, the command ends with code 1; when it does not answer\n"
                          "within %1, or nothing has changed within %2 after that, or the time of\n"
                          "--timeout is up, with code 4. With --json it writes {\"enabled\":...}.")
        .arg(inSeconds(AnswerTime), inSeconds(ChangeTime));
}

} // namespace

CommandInfo hotspotStatusCommand()
{
    return {QStringLiteral("hotspot status"),
            {},
            0,
            serviceOptions(),
            {{QString(), QStringLiteral("tell whether the hotspot is on, and its profile")}},
            QStringLiteral(
                "The passphrase is told by 'morvekctl hotspot profile --show-passphrase' only. When the profile\n"
                "is refused, the command ends with code 1; when it does not come within %1, or the\n"
                "time of --timeout, with code 4.")
                .arg(inSeconds(AnswerTime)),
            {QStringLiteral("morvekctl hotspot status"),
             QStringLiteral("morvekctl hotspot status --json | jq -r .profile.name")},
            createFrom<StatusCommand>};
}

CommandInfo hotspotOnCommand()
{
    return {QStringLiteral("hotspot on"),
            {},
            0,
            serviceOptions(),
            {{QString(), QStringLiteral("switch the hotspot on with its profile, and wait until it is")}},
            enableDetails(),
            {QStringLiteral("morvekctl hotspot on")},
            createEnable<true>};
}

CommandInfo hotspotOffCommand()
{
    return {QStringLiteral("hotspot off"),
            {},
            0,
            serviceOptions(),
            {{QString(), QStringLiteral("switch the hotspot off, and wait until it is")}},
            QStringLiteral("The tethering daemon is asked also when the hotspot is off: it may be starting.\n")
                + enableDetails(),
            {QStringLiteral("morvekctl hotspot off")},
            createEnable<false>};
}

} // namespace morvek
