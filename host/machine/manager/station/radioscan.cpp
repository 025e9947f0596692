// SPDX-License-Identifier: Apache-2.0
#include "radioscan.h"

#include "managerclient.h"
#include "managerrefusal.h"
#include "seenaccesspoint.h"
#include "stationtext.h"
#include "supplicantwatch.h"
#include "wirenames.h"
#include "world.h"

#include <chrono>

namespace morvek {

namespace {

// What has not been finished until then never will be.
constexpr std::chrono::seconds LongestWait {20};

} // namespace

RadioScan::RadioScan(ManagerClient *client, World *world, QObject *parent)
    : QObject(parent),
      m_client(client),
      m_world(world),
      m_supplicant(std::make_unique<SupplicantWatch>(nm_client_get_dbus_connection(client->get())))
{
    connect(client, &ManagerClient::runningChanged, this, [this] { m_asked = QDeadlineTimer(); });
}

RadioScan::~RadioScan() = default;

void RadioScan::ask(const AnswerCall &answer)
{
    // Who asks while a scan is under way gets its results.
    if (!m_asked.hasExpired()) {
        answer({});
        return;
    }
    m_asked.setRemainingTime(LongestWait);
    send(QString(), [this, answer](const GError *error) {
        const QByteArray text = error ? error->message : "";
        const bool isTooEarly = error && error->domain == NM_DEVICE_ERROR && error->code == NM_DEVICE_ERROR_NOT_ALLOWED
            && !text.contains("unavailable");
        answer({error && !isTooEarly ? refusalOf(error) : Refusal(), {}});
        if (!error)
            m_world->changeStatus(Service::Wifi, {{{Wire::LastEvent, StationText::ScanStarted}}, {}});
        else if (!isTooEarly)
            m_asked = QDeadlineTimer();
        else if (!text.contains("already scanning"))
            publish();
    });
}

void RadioScan::request(const QString &ssid)
{
    send(ssid, [](const GError *) {});
}

void RadioScan::send(const QString &ssid, const std::function<void(const GError *error)> &answered)
{
    NMDeviceWifi *radio = m_client->radio();
    if (!radio)
        return;
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    if (!ssid.isEmpty()) {
        const QByteArray name = ssid.toUtf8();
        GVariant *bytes =
            g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, name.constData(), gsize(name.size()), sizeof(guint8));
        g_variant_builder_add(&options, "{sv}", "ssids", g_variant_new_array(G_VARIANT_TYPE_BYTESTRING, &bytes, 1));
    }
    nm_device_wifi_request_scan_options_async(radio, g_variant_builder_end(&options), nullptr, AsyncCall::ready,
                                              AsyncCall::make(this, [answered](GObject *source, GAsyncResult *result) {
                                                  GErrorKeeper error;
                                                  nm_device_wifi_request_scan_finish(NM_DEVICE_WIFI(source), result,
                                                                                     &error);
                                                  answered(error.get());
                                              }));
}

void RadioScan::look()
{
    NMDeviceWifi *radio = m_client->radio();
    const QByteArray path = radio ? nm_object_get_path(NM_OBJECT(radio)) : "";
    const qint64 lastScan = radio ? nm_device_wifi_get_last_scan(radio) : 0;
    // What another radio has found before it came is no news.
    const bool isNews = path == m_radio && lastScan != m_lastScan && lastScan > 0;
    // A scan that was under way ends with its radio.
    if (path != m_radio || !radio || nm_device_get_state(NM_DEVICE(radio)) < NM_DEVICE_STATE_DISCONNECTED)
        m_asked = QDeadlineTimer();
    m_radio = path;
    m_lastScan = lastScan;
    if (isNews) {
        publish();
        Q_EMIT finished();
    }
}

void RadioScan::publish()
{
    m_asked = QDeadlineTimer();
    NMDeviceWifi *radio = m_client->radio();
    QJsonArray results;
    const QVector<SeenAccessPoint> all = radio ? SeenAccessPoint::readAll(radio) : QVector<SeenAccessPoint>();
    for (const SeenAccessPoint &one : all) {
        const int level = m_supplicant->levelOf(one.bssid, AccessPointText::level(one.percent));
        results += StationText::scanResult(one.bssid, one.ssid, level, one.frequency,
                                           AccessPointText::flags(one.security, one.infrastructure));
    }
    ZopChangeset changes;
    changes.assignments.insert(Wire::LastEvent, StationText::ScanFinished);
    changes.assignments.insert(Wire::ScanResults, StationText::scanResults(results));
    m_world->changeStatus(Service::Wifi, changes);
}

} // namespace morvek
