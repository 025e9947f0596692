// SPDX-License-Identifier: Apache-2.0
#include "managedmachine.h"

#include "eventlog.h"
#include "hotspotplace.h"
#include "managedhotspot.h"
#include "managedinterfaces.h"
#include "managedradio.h"
#include "remotesession.h"
#include "restoration.h"

#include <QtCore/QEventLoop>

#include <algorithm>
#include <utility>

namespace morvek {

struct ManagedMachine::Parts
{
    Parts(const ManagerOptions &asked, World *published, const Pace *clock, const EventLog *lines)
        : options(asked),
          world(published),
          pace(clock),
          log(lines),
          client(asked.only),
          restoration(&client, asked.remember, lines)
    {
    }

    bool protect(QString *error);
    void tellWhatIsMissing();
    void tellPermission();
    bool serveRadios();

    const ManagerOptions options;
    World *const world;
    const Pace *const pace;
    const EventLog *const log;
    ManagerClient client;
    Restoration restoration;
    SignalConnection permission {};
    bool hasToldPermission = false;
    std::unique_ptr<ManagedInterfaces> interfaces {};
    std::unique_ptr<ManagedRadio> radio {};
    std::unique_ptr<ManagedHotspot> hotspot {};
    std::function<void()> grown {};
};

bool ManagedMachine::Parts::protect(QString *error)
{
    QHostAddress own;
    RemoteSession::Carriers carriers;
    if (options.force)
        return true;
    if (!RemoteSession::read(&own, &carriers, error))
        return false;
    client.protect(carriers.names);
    const QString names = carriers.names.join(QLatin1String(", "));
    if (!carriers.isCertain && names.isEmpty())
        log->trouble(QStringLiteral("your remote session is at %1, and nobody knows what carries it: nothing is "
                                    "protected, and a request may end it")
                         .arg(own.toString()));
    else if (!carriers.isCertain)
        log->trouble(QStringLiteral("your remote session is at %1, and may be carried by %2, which is not touched "
                                    "without --force")
                         .arg(own.toString(), names));
    else if (!names.isEmpty())
        log->trouble(
            QStringLiteral("your remote session is carried by %1, which is not touched without --force").arg(names));
    return true;
}

void ManagedMachine::Parts::tellWhatIsMissing()
{
    for (const QString &name : options.only) {
        if (!client.knows(name))
            log->trouble(QStringLiteral("--only: the manager knows no interface \"%1\"").arg(name));
    }
    if (!client.radio())
        log->trouble(QStringLiteral("no radio: neither Wi-Fi nor a hotspot is served"));
    tellPermission();
    permission = SignalConnection::make<guint, guint>(client.get(), "permission-changed",
                                                      [this](guint, guint) { tellPermission(); });
}

/*! The manager says it some time after everything else. */
void ManagedMachine::Parts::tellPermission()
{
    const NMClientPermissionResult may =
        nm_client_get_permission_result(client.get(), NM_CLIENT_PERMISSION_NETWORK_CONTROL);
    const bool isRefused = may == NM_CLIENT_PERMISSION_RESULT_NO || may == NM_CLIENT_PERMISSION_RESULT_AUTH;
    if (isRefused && !std::exchange(hasToldPermission, true))
        log->trouble(QStringLiteral("the manager does not let you change networks: requests will be refused"));
}

/*! Whether there is more than before. */
bool ManagedMachine::Parts::serveRadios()
{
    const bool hasRadio = !radio && client.radio();
    const bool hasHotspot = !hotspot && HotspotPlace::exists(client);
    if (hasRadio)
        radio = std::make_unique<ManagedRadio>(&client, &restoration, world, log, options.remember);
    if (hasHotspot)
        hotspot = std::make_unique<ManagedHotspot>(&client, &restoration, radio.get(), world, pace, log);
    return hasRadio || hasHotspot;
}

ManagedMachine::ManagedMachine(const ManagerOptions &options, World *world, const Pace *pace, const EventLog *log)
    : m_parts(std::make_unique<Parts>(options, world, pace, log))
{
}

ManagedMachine::~ManagedMachine() = default;

bool ManagedMachine::start(const QString &root, const QVector<Service> &served, QString *error)
{
    Parts &parts = *m_parts;
    if (!parts.client.start(error) || !m_parts->protect(error))
        return false;
    parts.tellWhatIsMissing();
    parts.restoration.setFile(SessionFile(root, served));
    QEventLoop loop; // nothing is published yet that could wait
    bool isBack = false;
    giveBack([&loop, &isBack] {
        isBack = true;
        loop.quit();
    });
    if (!isBack)
        loop.exec();
    const auto isThere = [&parts](const QString &name) { return parts.client.knows(name); };
    if (parts.options.only.isEmpty() || std::any_of(parts.options.only.begin(), parts.options.only.end(), isThere))
        parts.interfaces =
            std::make_unique<ManagedInterfaces>(&parts.client, &parts.restoration, parts.world, parts.log);
    parts.serveRadios();
    if (parts.radio && !parts.hotspot)
        parts.log->trouble(
            QStringLiteral("no radio of this machine can be an access point: the tethering daemon is not served"));
    QObject::connect(&parts.client, &ManagerClient::changed, &parts.client, [&parts] {
        if (parts.serveRadios() && parts.grown)
            parts.grown();
    });
    return true;
}

void ManagedMachine::setGrown(const std::function<void()> &grown)
{
    m_parts->grown = grown;
}

void ManagedMachine::giveBack(const std::function<void()> &done)
{
    // They would go on with what applications have asked for.
    m_parts->client.disconnect(&m_parts->client);
    m_parts->hotspot.reset();
    m_parts->radio.reset();
    m_parts->interfaces.reset();
    m_parts->restoration.giveBack(done);
}

InterfaceControl *ManagedMachine::interfaces() const
{
    return m_parts->interfaces.get();
}

RadioControl *ManagedMachine::radio() const
{
    return m_parts->radio.get();
}

HotspotControl *ManagedMachine::hotspot() const
{
    return m_parts->hotspot.get();
}

} // namespace morvek
