// SPDX-License-Identifier: Apache-2.0
#include "hotspotmonitorcommand.h"

#include "hotspotcommand.h"
#include "hotspottext.h"
#include "monitor.h"
#include "output.h"
#include "texts.h"

namespace morvek {

namespace {

const QString presentEvent = QStringLiteral("present");
const QString profileEvent = QStringLiteral("profile");

class HotspotMonitorCommand : public Monitor<HotspotCommand>
{
public:
    HotspotMonitorCommand(const CommandLine &line, int count)
        : Monitor(line, count, profileEvent.size())
    {
    }

protected:
    void follow() override
    {
        connect(service(), &HotSpotService::enabledChanged, this, [this](bool enabled) {
            const QString event = onOrOff(enabled);
            tellChange(toJson(event), text(event));
        });
        tell(toJson(presentEvent), text(presentEvent));
        // It belongs to the present state, but a daemon may keep it back.
        compare();
    }

    void compare() override
    {
        fetchAtLeisure(
            QStringLiteral("the profile was not read"), [this](const WifiHotspot &profile) { tellProfile(profile); },
            [](const QString &complaint) { note(complaint); });
    }

private:
    void tellProfile(const WifiHotspot &profile)
    {
        const QString shownProfile = shown(morvek::toJson(profile), shortText(profile));
        if (std::exchange(m_profile, shownProfile) == shownProfile)
            return;
        QJsonObject object = toJson(profileEvent);
        object.insert(QStringLiteral("profile"), morvek::toJson(profile));
        tell(object, text(profileEvent) + QLatin1String(", ") + shortText(profile));
    }

    QJsonObject toJson(const QString &event) const
    {
        return {{QStringLiteral("event"), event}, {QStringLiteral("enabled"), service()->enabled()}};
    }

    QString text(const QString &event) const
    {
        return eventColumn(event) + QLatin1String("hotspot ") + onOrOff(service()->enabled());
    }

    QString m_profile; //!< as it was shown
};

} // namespace

CommandInfo hotspotMonitorCommand()
{
    return {QStringLiteral("hotspot monitor"),
            {},
            0,
            monitorOptions(),
            {{QString(), QStringLiteral("tell when the hotspot goes on or off, after the present state and profile")}},
            QStringLiteral(
                "Each line tells one event and the hotspot's state at that moment:\n"
                "  present    at the start\n"
                "  profile    the profile, as soon as the daemon has told it\n"
                "  on, off\n"
                "  gone, back the tethering daemon; not counted\n"
                "Later changes of the profile are told only when the daemon was gone meanwhile. With --json each\n"
                "line is one object: \"time\" (UTC), \"event\", \"enabled\", \"profile\". The command ends well by\n"
                "SIGINT (Ctrl-C), SIGTERM, SIGHUP, SIGQUIT, --count, or, without --count, --timeout."),
            {QStringLiteral("morvekctl hotspot monitor"),
             QStringLiteral("morvekctl hotspot monitor --json --count 1 --timeout 60")},
            createMonitor<HotspotMonitorCommand>};
}

} // namespace morvek
