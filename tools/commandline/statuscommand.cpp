// SPDX-License-Identifier: Apache-2.0
#include "statuscommand.h"

#include "accesspointtext.h"
#include "daemonwatch.h"
#include "output.h"
#include "rootstate.h"
#include "servicecommand.h"
#include "table.h"
#include "texts.h"

#include <hotspotservice.h>
#include <networkinterfaceservice.h>
#include <wifiservice.h>

#include <algorithm>

namespace morvek {

namespace {

/*! A daemon, and the service of the library that needs it. */
struct Part
{
    QString daemon;
    QString key; //!< of the daemon in JSON
    ServiceBase *service;
    bool isThere = false;
};

class StatusCommand : public Command
{
public:
    explicit StatusCommand(const CommandLine &line)
        : m_json(line.has(QStringLiteral("json")))
    {
        m_patience.setSingleShot(true);
        connect(&m_patience, &QTimer::timeout, this, &StatusCommand::tell);
    }

    void start() override
    {
        m_root = RootState::look();
        if (m_root.fault.isEmpty())
            makeServices();
        m_patience.start(mayStillBecomeReady() ? EventLoopPatience : 0);
    }

private:
    void makeServices()
    {
        m_interfaces = std::make_unique<NetworkInterfaceService>();
        m_wifi = std::make_unique<WifiService>();
        m_hotspot = std::make_unique<HotSpotService>();
        m_parts = {{QStringLiteral("networking"), QStringLiteral("networking"), m_interfaces.get()},
                   {QStringLiteral("Wi-Fi"), QStringLiteral("wifi"), m_wifi.get()},
                   {QStringLiteral("tethering"), QStringLiteral("tethering"), m_hotspot.get()}};
        for (Part &part : m_parts) {
            part.isThere = DaemonWatch::isServed(part.daemon);
            connect(part.service, &ServiceBase::readyChanged, this, [this] {
                if (!mayStillBecomeReady())
                    m_patience.start(0); // what a service tells when it becomes ready may follow that
            });
        }
    }

    bool mayStillBecomeReady() const
    {
        return std::any_of(m_parts.begin(), m_parts.end(),
                           [](const Part &part) { return part.isThere && !part.service->ready(); });
    }

    /*! There is no service when the root cannot be used. */
    static bool isReady(const ServiceBase *service) { return service && service->ready(); }

    void tell()
    {
        if (m_json)
            writeJson();
        else
            writeRows();
        const QString trouble = troubleText();
        if (!trouble.isEmpty())
            complain(trouble);
        Q_EMIT finished(trouble.isEmpty() ? Done : NotReady);
    }

    QString troubleText() const
    {
        if (!m_root.fault.isEmpty() || !m_root.lack.isEmpty())
            return m_root.fault + m_root.lack;
        QStringList missing;
        QStringList stuck;
        for (const Part &part : m_parts) {
            if (!part.isThere)
                missing += part.daemon;
            else if (!part.service->ready())
                stuck += part.daemon;
        }
        if (!missing.isEmpty())
            return QStringLiteral("not there: %1 daemon; ").arg(missing.join(QLatin1String(" daemon, ")))
                + (missing.size() == int(m_parts.size())
                       ? QStringLiteral("start morvek-hostd, or set ZOP_ROOT to its root")
                       : QStringLiteral("its scenario or machine may lack that, or --without may leave it out"));
        return stuck.isEmpty() ? QString()
                               : QStringLiteral("there, but of no use to an application: %1 daemon; it may be starting")
                                     .arg(stuck.join(QLatin1String(" daemon, ")));
    }

    void writeRows() const
    {
        QStringList there;
        for (const Part &part : m_parts) {
            if (part.isThere)
                there += part.daemon;
        }
        writeTable({{QStringLiteral("Root"), m_root.path},
                    {QStringLiteral("Daemons"), there.join(QLatin1String(", "))},
                    {QStringLiteral("Interfaces"), interfacesText()},
                    {QStringLiteral("Wi-Fi"), wifiText()},
                    {QStringLiteral("Hotspot"), isReady(m_hotspot.get()) ? onOrOff(m_hotspot->enabled()) : QString()}});
    }

    int connectedInterfaces() const
    {
        const QList<NetworkInterface> interfaces = m_interfaces->interfaces();
        return int(std::count_if(interfaces.begin(), interfaces.end(),
                                 [](const NetworkInterface &candidate) { return candidate.connected(); }));
    }

    QString interfacesText() const
    {
        if (!isReady(m_interfaces.get()))
            return QString();
        const QString preferred = m_interfaces->preferredInterface().name();
        return QStringLiteral("%1 of %2 connected, %3 preferred")
            .arg(connectedInterfaces())
            .arg(m_interfaces->interfaces().size())
            .arg(preferred.isEmpty() ? QStringLiteral("none") : preferred);
    }

    QString wifiText() const
    {
        if (!isReady(m_wifi.get()))
            return QString();
        return m_wifi->connected() ? QLatin1String("connected to ") + quoted(m_wifi->connectedAccessPoint().ssid())
                                   : onOrOff(m_wifi->powered()) + QLatin1String(", not connected");
    }

    void writeJson() const
    {
        QJsonObject daemons;
        for (const Part &part : m_parts)
            daemons.insert(part.key, part.isThere);
        QJsonObject services {{QStringLiteral("interfaces"), QJsonValue()},
                              {QStringLiteral("wifi"), QJsonValue()},
                              {QStringLiteral("hotspot"), QJsonValue()}};
        if (isReady(m_interfaces.get()))
            services[QStringLiteral("interfaces")] =
                QJsonObject {{QStringLiteral("connected"), connectedInterfaces()},
                             {QStringLiteral("number"), m_interfaces->interfaces().size()},
                             {QStringLiteral("preferred"), textOrNull(m_interfaces->preferredInterface().name())}};
        if (isReady(m_wifi.get()))
            services[QStringLiteral("wifi")] = stateJson(m_wifi->powered(), m_wifi->connectedAccessPoint());
        if (isReady(m_hotspot.get()))
            services[QStringLiteral("hotspot")] = QJsonObject {{QStringLiteral("enabled"), m_hotspot->enabled()}};
        writeLine(
            jsonLine(QJsonObject {{QStringLiteral("root"),
                                   QJsonObject {{QStringLiteral("path"), textOrNull(m_root.path)},
                                                {QStringLiteral("fault"), textOrNull(m_root.fault + m_root.lack)}}},
                                  {QStringLiteral("daemons"), daemons},
                                  {QStringLiteral("services"), services}}));
    }

    const bool m_json;
    RootState m_root;
    std::unique_ptr<NetworkInterfaceService> m_interfaces;
    std::unique_ptr<WifiService> m_wifi;
    std::unique_ptr<HotSpotService> m_hotspot;
    std::vector<Part> m_parts;
    QTimer m_patience;
};

std::vector<Option> optionsOfLook()
{
    std::vector<Option> options = serviceOptions();
    const auto isForWaiting = [](const Option &option) {
        return option.name == QLatin1String("wait") || option.name == QLatin1String("timeout");
    };
    options.erase(std::remove_if(options.begin(), options.end(), isForWaiting), options.end());
    return options;
}

} // namespace

CommandInfo statusCommand()
{
    return {QStringLiteral("status"),
            {},
            0,
            optionsOfLook(),
            {{QString(), QStringLiteral("tell which daemons are there, and what their services tell")}},
            QStringLiteral("Looks first at the root of the daemons' objects, and tells what is wrong with it. When a\n"
                           "daemon is not there, the command tells the rest and ends with code 3."),
            {QStringLiteral("morvekctl status"), QStringLiteral("morvekctl status --json | jq .daemons")},
            createFrom<StatusCommand>};
}

} // namespace morvek
