// SPDX-License-Identifier: Apache-2.0
#include "wifijoin_p.h"

#include "daemonwatch.h"
#include "passkeyfault_p.h"
#include "publishedsecurity.h"
#include "wifichoice.h"
#include "wifitexts_p.h"

#include <asyncwificonnectoperation.h>
#include <wificonnectionconfig.h>
#include <wifiservice.h>

#include <QtCore/QRegularExpression>

#include <utility>

namespace morvek {

namespace {

// In milliseconds. A daemon that was replaced is known to be another one by the end of the second.
constexpr int Deadline = 45000;
constexpr int RestartTime = 100;
/*! How much of the deadline nothing may happen until it is looked again. */
constexpr int PartOfDeadline = 4;

// What the library and the daemon say.
const QLatin1String NotReadyText("Service is not ready");
const QLatin1String BusyText("Another connect operation in progress.");
const QLatin1String LeftText("Cancelling connect operation, due to issued disconnect command");
const QLatin1String FailedText("Failed to connect to Access Point");
const QLatin1String NotLetInEvent("CTRL-EVENT-SSID-TEMP-DISABLED");
const QLatin1String NotFoundEvent("CTRL-EVENT-NETWORK-NOT-FOUND");
const QLatin1String WrongKeyReason("reason=WRONG_KEY");

/*! Whether \a event is about another network than \a ssid, for certain: each daemon escapes names in its own way. */
bool isAboutAnother(const QString &event, const QString &ssid)
{
    static const QRegularExpression plainName(QStringLiteral("\\bssid=\"([^\"\\\\]*)\""));
    const QRegularExpressionMatch match = plainName.match(event);
    return match.hasMatch() && match.captured(1) != ssid;
}

} // namespace

WifiJoin::WifiJoin(NetworkController *controller, SharedStation *station, const QString &ssid, const QString &passkey)
    : WifiRequest(controller, station, ssid, Deadline),
      m_passkey(passkey),
      m_hasPasskey(!passkey.isEmpty())
{
    connect(&m_patience, &QTimer::timeout, this, &WifiJoin::onPatienceOver);
    connect(this, &NetworkRequest::deadlineChanged, this, [this] { beginPhase(m_phase); });
}

WifiJoin::~WifiJoin()
{
    if (hasStation())
        station().endJoining(this);
}

void WifiJoin::start()
{
    if (!isPossible() || !needRadio())
        return;
    if (!station().beginJoining(this, subject())) {
        fail(Busy, tr("“%1” is being joined: wait for that, or cancel it.").arg(named(station().joiningSsid())));
        return;
    }
    setUnderWay();
    connect(&station(), &SharedStation::changed, this, &WifiJoin::compare);
    connect(&station(), &SharedStation::eventTold, this, &WifiJoin::onEvent);
    connect(&station(), &SharedStation::leaveAsked, this,
            [this] { fail(Overtaken, tr("Leaving the network was asked for meanwhile.")); });
    connect(station().service(), &WifiService::connectedChanged, this, [this] {
        m_hasLeft = true;
        compare();
    });
    beginPhase(Looking);
    scan();
}

bool WifiJoin::isPossible()
{
    if (subject().isEmpty())
        fail(Invalid, tr("A network is joined by its name, and there is none."));
    else if (!isReadable(subject()))
        fail(Invalid, tr("The name of this network cannot be read, so it cannot be joined."));
    else if (m_hasPasskey && faultOf(m_passkey) != PasskeyFault::None)
        fail(Invalid, tr("A passkey has 8 to 63 plain letters, digits, blanks and signs, or 64 hexadecimal digits."));
    return !hasEnded();
}

void WifiJoin::beginPhase(Phase phase)
{
    m_phase = phase;
    if (isUnderWay() && !hasEnded())
        m_patience.start((deadline() < 0 ? Deadline : deadline()) / PartOfDeadline);
}

void WifiJoin::onPatienceOver()
{
    if (m_phase == Judging)
        notLetIn();
    else
        scan(); // it was refused perhaps; or what is being joined has gone
}

void WifiJoin::onScanned(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &security)
{
    endScan();
    const WifiChoice choice(accessPoints, security, subject(), m_hasPasskey);
    if (m_phase == Looking)
        choose(choice);
    else if (choice.outcome != WifiChoice::Joinable)
        notInRange();
    else if (m_phase == Judging)
        notLetIn();
}

void WifiJoin::choose(const WifiChoice &choice)
{
    const QString name = named(subject());
    switch (choice.outcome) {
    case WifiChoice::Joinable:
        join(choice.security);
        break;
    case WifiChoice::NotInRange:
        notInRange();
        break;
    case WifiChoice::NeedsPasskey:
        fail(Invalid,
             choice.hasOpenTwin
                 ? tr("“%1” needs a passkey. The open network of that name is not taken for it.").arg(name)
                 : tr("“%1” needs a passkey.").arg(name));
        break;
    case WifiChoice::TakesNone:
        fail(Invalid, tr("“%1” is open: join it without a passkey, if that is what you want.").arg(name));
        break;
    case WifiChoice::Unsupported:
        fail(Invalid,
             choice.hasOpenTwin
                 ? tr("“%1” cannot be joined. The open network of that name is not taken for it.").arg(name)
                 : tr("“%1” cannot be joined. Its security: %2.").arg(name, choice.security.name()));
        break;
    }
}

void WifiJoin::join(const NetworkSecurity &security)
{
    QString passkey = m_passkey.text();
    m_passkey.clear();
    {
        WifiConnectionConfig config;
        config.setSsid(subject());
        if (m_hasPasskey) {
            config.setKeyManagementType(WifiKeyManagementPsk);
            config.setSecurityProtocol(security.hasWpa2() ? WifiSecurityProtocolWpa2 : WifiSecurityProtocolWpa);
            config.setPasskey(passkey);
        }
        m_former = station().service()->connectedAccessPoint().ssid();
        m_hasLeft = !station().service()->connected();
        m_operation = station().connectAccessPoint(config);
    }
    Secret::wipe(&passkey);
    beginPhase(Joining);
    connect(m_operation, &AsyncWifiConnectOperation::success, this, &WifiJoin::compare);
    connect(m_operation, &AsyncWifiConnectOperation::failure, this, &WifiJoin::onFailed);
}

/*! Compares what the station is connected to with what was asked. */
void WifiJoin::compare()
{
    if (hasEnded() || !hasStation())
        return;
    if (!station().state().powered) {
        if (m_phase != Looking)
            station().withdraw(); // or it would be joined when the radio is on again
        onRadioOff();
        return;
    }
    const WifiAccessPoint joined = station().service()->connectedAccessPoint();
    // The library also takes for the outcome what the former network tells until the station leaves it.
    const bool isFormer = !m_hasLeft && joined.ssid() == m_former;
    if (m_phase == Looking || joined.isEmpty() || isFormer)
        return;
    if (joined.ssid() != subject())
        fail(Overtaken, tr("The unit has connected to “%1” instead.").arg(named(joined.ssid())));
    else if (m_hasPasskey && NetworkSecurity(joined).isOpen())
        fail(Overtaken, tr("The unit has connected to an open network of the name “%1”.").arg(named(subject())));
    else
        succeed();
}

void WifiJoin::onEvent(const QString &event)
{
    if (hasEnded() || m_phase == Looking)
        return;
    if (event.contains(NotLetInEvent)) {
        if (isAboutAnother(event, subject()))
            m_anotherHasFailed = true;
        else if (event.contains(WrongKeyReason) && m_hasPasskey)
            fail(WrongPasskey, tr("The passkey of “%1” is wrong.").arg(named(subject())), 0,
                 m_operation->error().message());
        else
            judge();
    } else if (event.startsWith(NotFoundEvent) && !isScanning()) {
        scan();
    }
}

void WifiJoin::onFailed()
{
    if (hasEnded())
        return;
    const QString text = m_operation->error().message();
    if (text == FailedText && std::exchange(m_anotherHasFailed, false))
        return; // which the library does not tell apart; but what the station connects to is seen without it
    if (text == FailedText)
        judge();
    else if (text == LeftText)
        fail(Overtaken, tr("Leaving the network was asked for meanwhile."), 0, text);
    else if (text == BusyText)
        fail(Busy, tr("Another network is being joined: wait for that."), 0, text);
    else if (text == NotReadyText)
        fail(NotReady, tr("The Wi-Fi service is not ready."), 0, text);
    else // unless the daemon has died: then that ends it
        QTimer::singleShot(RestartTime, this, [this, text] {
            if (DaemonWatch::isServed(QStringLiteral("Wi-Fi")))
                fail(Refused, tr("“%1” was not joined: the Wi-Fi service has refused it.").arg(named(subject())), 0,
                     text);
        });
}

/*! It was not let in, for a reason that is not known: looks whether the network is there. */
void WifiJoin::judge()
{
    if (m_phase == Judging)
        return;
    beginPhase(Judging);
    scan();
}

void WifiJoin::notLetIn()
{
    const QString text = m_operation->error().message();
    withdraw();
    if (m_hasPasskey)
        fail(WrongPasskey, tr("“%1” has not let the unit in: the passkey is wrong, as a rule.").arg(named(subject())),
             0, text);
    else
        fail(Refused, tr("“%1” has not let the unit in; it may not be open after all.").arg(named(subject())), 0, text);
}

void WifiJoin::notInRange()
{
    withdraw();
    fail(OutOfRange, tr("“%1” is not in range.").arg(named(subject())));
}

/*! Gives up what was asked of the library, and returns a sentence about what may still come of it. */
QString WifiJoin::withdraw()
{
    if (m_phase == Looking || !hasStation())
        return QString();
    // Otherwise the daemon would go on trying, and join it some time when nobody expects it any more.
    station().withdraw();
    const WifiAccessPoint present = station().service()->connectedAccessPoint();
    if (present.isEmpty())
        return tr("“%1” may still be joined.").arg(named(subject()));
    return tr("The unit is still connected to “%1”, and may yet leave it.").arg(named(present.ssid()));
}

QString WifiJoin::giveUp(Failure why)
{
    if (why == TimedOut && m_phase == Judging) {
        notLetIn();
        return QString();
    }
    if (why == Lost)
        return m_phase == Looking
            ? QString()
            : tr("The Wi-Fi service has stopped; “%1” may have been joined all the same.").arg(named(subject()));
    const QString rest = withdraw();
    if (why == Cancelled)
        return rest.isEmpty() ? tr("Cancelled. Nothing has changed.") : tr("Cancelled. %1").arg(rest);
    return rest.isEmpty() ? tr("The search for networks has not ended in time; it may have been refused.")
                          : tr("Not joined in time. %1").arg(rest);
}

void WifiJoin::release()
{
    m_passkey.clear();
    m_patience.stop();
    if (hasStation())
        station().endJoining(this);
    WifiRequest::release();
}

} // namespace morvek
