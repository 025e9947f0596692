// SPDX-License-Identifier: Apache-2.0
#include "wificonnectcommand.h"

#include "accesspointtext.h"
#include "networkchoice.h"
#include "output.h"
#include "passkey.h"
#include "passkeyprompt.h"
#include "publishednames.h"
#include "scanningcommand.h"
#include "terminationsignals.h"
#include "texts.h"

#include <asyncwificonnectoperation.h>
#include <wificonnectionconfig.h>

namespace morvek {

namespace {

const QLatin1String FailedToConnect("Failed to connect to Access Point");

const QString PasskeyKind = QStringLiteral("passkey");

WifiConnectionConfig configurationFor(const NetworkChoice &choice, const QString &passkey)
{
    WifiConnectionConfig config;
    config.setSsid(choice.accessPoint.ssid());
    if (!choice.security.takesPasskey())
        return config;
    config.setKeyManagementType(WifiKeyManagementPsk);
    config.setSecurityProtocol(choice.security.hasWpa2() ? WifiSecurityProtocolWpa2 : WifiSecurityProtocolWpa);
    config.setPasskey(passkey);
    return config;
}

class ConnectCommand : public ScanningCommand
{
public:
    /*! Asks for a passkey when one is needed and \a passkey is empty. */
    ConnectCommand(const CommandLine &line, const QString &passkey)
        : ScanningCommand(line),
          m_ssid(line.words.first()),
          m_withPasskey(line.has(passkeyFileOption(PasskeyKind).name)),
          m_passkey(passkey)
    {
        connect(&m_signals, &TerminationSignals::received, this,
                [this] { notJoined(QStringLiteral(": interrupted") + stillConnected()); });
    }

protected:
    void onScanStarted() override { tellStep(QStringLiteral("looking for %1").arg(quoted(m_ssid))); }

    void onScanned(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &security) override
    {
        m_choice = chooseNetwork(accessPoints, security, m_ssid, m_withPasskey);
        if (!m_choice.complaint.isEmpty())
            fail(m_choice.complaint, m_choice.code);
        else if (!m_choice.security.takesPasskey() || !m_passkey.isEmpty())
            join();
        else if (PasskeyPrompt::isPossible())
            askForPasskey();
        else
            fail(QStringLiteral("%1 needs a passkey: give --passkey-file FILE, \"-\" for standard input")
                         .arg(quoted(m_ssid))
                     + (m_choice.hasOpenTwin ? openTwinLeftOut() : QString()),
                 WrongUsage);
    }

    void withdraw() override
    {
        m_prompt.reset();
        if (!m_joining)
            return;
        const QString reason = QStringLiteral(": it may be out of range now, or the Wi-Fi daemon does not answer");
        setOverdue(quoted(m_ssid) + QLatin1String(" has not been joined")
                   + (service()->connected() ? stillConnected() : reason));
        m_joining = false;
        // Otherwise the daemon would go on trying, and join some time when nobody expects it any more. A network that
        // was not left yet would be lost by that.
        if (!service()->connected())
            service()->disconnectAccessPoint();
    }

    void onDaemonDied() override
    {
        m_joining = false; // one that has taken its place knows nothing of that
        ScanningCommand::onDaemonDied();
    }

private:
    void askForPasskey()
    {
        setOverdue(QStringLiteral("no passkey was typed"));
        setDeadline(-1);
        m_prompt = std::make_unique<PasskeyPrompt>(QStringLiteral("Passkey of %1: ").arg(quoted(m_ssid)));
        // Queued, as the answer may be the end of the prompt.
        connect(m_prompt.get(), &PasskeyPrompt::typed, this, &ConnectCommand::onTyped, Qt::QueuedConnection);
    }

    void onTyped(const QString &passkey)
    {
        m_passkey = passkey;
        const QString fault = faultOfTyped(PasskeyKind, passkey);
        if (fault.isEmpty())
            join();
        else
            notJoined(QStringLiteral(": ") + fault);
    }

    void join()
    {
        const QString signal = signalText(m_choice.accessPoint);
        tellStep(QStringLiteral("joining %1 (%2), strongest by %3")
                     .arg(quoted(m_ssid), m_choice.security.name(), m_choice.accessPoint.bssid())
                 + (signal.isEmpty() ? QString() : QStringLiteral(" with ") + signal));
        setDeadline(JoinTime);
        m_joining = true;
        m_former = service()->connectedAccessPoint();
        m_left = !service()->connected();
        connect(service(), &WifiService::connectedChanged, this, &ConnectCommand::onConnectedChanged);
        m_join.reset(service()->connectAccessPoint(configurationFor(m_choice, m_passkey)));
        connect(m_join.get(), &AsyncWifiConnectOperation::success, this, &ConnectCommand::onConnection);
        connect(m_join.get(), &AsyncWifiConnectOperation::failure, this, &ConnectCommand::onRefused);
    }

    void onConnectedChanged(bool connected)
    {
        m_left = true;
        if (connected)
            onConnection();
    }

    void onConnection()
    {
        const WifiAccessPoint joined = service()->connectedAccessPoint();
        // The operation also takes for its outcome what the former network tells until the station leaves it.
        const bool isFormer = !m_left && joined.ssid() == m_former.ssid();
        if (isFinished() || joined.isEmpty() || isFormer)
            return;
        m_joining = false;
        if (joined.ssid() != m_ssid) {
            notJoined(QStringLiteral(": the station is connected to %1 in its place").arg(quoted(joined.ssid())));
            return;
        }
        if (json())
            writeLine(jsonLine(stateJson(service()->powered(), joined)));
        else
            tellStep(QStringLiteral("connected to ") + connectionText(joined));
        finish(Done);
    }

    void onRefused()
    {
        m_joining = false;
        const AsyncOperationError error = m_join->error();
        setFailureCode(error.code());
        QString reason;
        if (error.message() == FailedToConnect)
            reason = m_choice.security.takesPasskey() ? QStringLiteral(" (the passkey is wrong, as a rule)")
                                                      : QStringLiteral(" (it may not be open after all)");
        notJoined(QStringLiteral(", code %1: ").arg(error.code()) + error.message() + reason);
    }

    /*! What is added when the station has not even left its network to join another one; else empty. */
    QString stillConnected() const
    {
        if (!m_joining || !service()->connected())
            return QString();
        return QStringLiteral("; the station is still connected to ")
            + quoted(service()->connectedAccessPoint().ssid());
    }

    void notJoined(const QString &why) { fail(quoted(m_ssid) + QLatin1String(" was not joined") + why); }

    void tellStep(const QString &step) const
    {
        if (json())
            note(step);
        else
            writeLine(step.left(1).toUpper() + step.mid(1) + QLatin1Char('.'));
    }

    TerminationSignals m_signals;
    const QString m_ssid;
    const bool m_withPasskey;
    QString m_passkey;
    NetworkChoice m_choice; //!< once there are scan results
    std::unique_ptr<PasskeyPrompt> m_prompt;
    std::unique_ptr<AsyncWifiConnectOperation> m_join;
    WifiAccessPoint m_former; //!< what the station was connected to before
    bool m_left = false;      //!< the station is not, or no longer, connected to that
    bool m_joining = false;
};

// A file is read before anything is asked of the daemon; a terminal only when a passkey turns out to be needed.
std::unique_ptr<Command> create(const CommandLine &line, QString *error)
{
    if (line.words.first().isEmpty()) {
        *error = QStringLiteral("the SSID is empty: a network is joined by its name");
        return nullptr;
    }
    QString passkey;
    if (!readGivenPasskey(line, PasskeyKind, &passkey, error))
        return nullptr;
    return std::make_unique<ConnectCommand>(line, passkey);
}

} // namespace

CommandInfo wifiConnectCommand()
{
    return {QStringLiteral("wifi connect"),
            {{QStringLiteral("SSID"), [](const QStringList &) { return PublishedNames::networks(); }}},
            0,
            withServiceOptions({passkeyFileOption(PasskeyKind)}),
            {{QStringLiteral("SSID"), QStringLiteral("leave the present network, and join the one of that name")}},
            QStringLiteral(
                "Looks for the network, and takes the security of its strongest access point with a passkey (WPA\n"
                "or WPA2); an open network only when none of that name is protected, and never with\n"
                "--passkey-file. Without that, the passkey is asked for on the terminal.\n\n"
                "The file is read before any time counts. When there are no scan results within %1, or\n"
                "the network is not joined within %2, or when the time of --timeout is up, the attempt\n"
                "is withdrawn and the command ends with code 4; by Ctrl-C with code 1. With --json the steps are\n"
                "told on standard error, and the outcome is what 'wifi status --json' would write.")
                .arg(inSeconds(ScanTime), inSeconds(JoinTime)),
            {QStringLiteral("morvekctl wifi connect Garage"),
             QStringLiteral("morvekctl wifi connect Garage --passkey-file garage.key --json")},
            create};
}

} // namespace morvek
