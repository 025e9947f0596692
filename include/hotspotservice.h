// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTSERVICE_H
#define MORVEK_HOTSPOTSERVICE_H

#include "networkexport.h"
#include "servicebase.h"
#include "wifihotspot.h"

#include <memory>

namespace morvek {

class AsyncHotspotConfigOperation;
class AsyncHotspotEnableOperation;

/*!
 * The unit's Wi-Fi hotspot: switches it on and off, reads its profile and writes it.
 *
 * \code
 * #include <asynchotspotconfigoperation.h>
 * #include <asynchotspotenableoperation.h>
 * #include <hotspotservice.h>
 * #include <networklibraryexports.h>
 *
 * void Settings::begin()
 * {
 *     m_service = newHotSpotService();
 *     connect(m_service, &HotSpotService::readyChanged, this, &Settings::readProfile);
 * }
 *
 * void Settings::readProfile()
 * {
 *     AsyncHotspotConfigOperation *operation = m_service->configuration();
 *     connect(operation, &AsyncHotspotConfigOperation::success, this, [this, operation] {
 *         operation->deleteLater();
 *         if (m_service) // it may have been deleted meanwhile
 *             switchOn();
 *     });
 *     connect(operation, &AsyncHotspotConfigOperation::failure, this, [this, operation] {
 *         show(operation->error().message());
 *         operation->deleteLater();
 *     });
 * }
 *
 * void Settings::switchOn()
 * {
 *     AsyncHotspotEnableOperation *operation = m_service->setEnabled(true);
 *     connect(operation, &AsyncHotspotEnableOperation::success, operation, &QObject::deleteLater);
 *     connect(operation, &AsyncHotspotEnableOperation::failure, this, [this, operation] {
 *         show(operation->error().message());
 *         operation->deleteLater();
 *     });
 * }
 *
 * void Settings::end()
 * {
 *     deleteHotSpotService(&m_service);
 * }
 * \endcode
 *
 * The service is usable on the thread that created it, which must be the same for all hotspot services of a process.
 * Slots may delete it.
 *
 * A new service is not ready: it becomes so, from the event loop, when the tethering daemon serves its control object,
 * and tells it with readyChanged(). It tries once: when the control object is there and one of the daemon's objects
 * cannot be opened, such as while the daemon restarts, the service does not become ready any more, and no signal tells
 * that. An application that is still waiting after a second or two makes a new service, and waits longer each time: see
 * below. Once ready, it outlives any restart of the daemon; what it tells is what the daemon has published last, also
 * while the daemon is dead.
 *
 * The caller owns the operations that are returned, which are never null, and may delete them at any time. Their
 * failures carry code -1. There is no time limit: a request that the daemon does not answer stays pending, and fails
 * when the daemon dies, as if it were refused. A request that the daemon answers as another one ends as that one
 * would: with its messages, and with a result only when that is of the same type.
 *
 * Deleting the service does not delete what talks to the tethering daemon behind it: that stays for the life of the
 * process, with up to two open objects, and operations that are pending still end. So an application keeps the first
 * service that becomes ready, and does not try for ever.
 */
class MORVEK_NETWORK_EXPORT HotSpotService : public ServiceBase
{
    Q_OBJECT

public:
    HotSpotService();
    ~HotSpotService() override;

    /*! Always true. */
    bool available() const override;
    /*! Whether the tethering daemon's objects have been opened. */
    bool ready() const override;

    /*!
     * Asks the tethering daemon to start the hotspot, or to stop it. The operation succeeds when the daemon has
     * accepted that; enabledChanged() tells when the hotspot is on or off. It fails with one of these messages:
     *
     * - "The service is not ready."
     * - "Failed to enable config.": the daemon refuses to start the hotspot.
     * - "Failed to disable config.": it refuses to stop it.
     * - "Unable to write to vantor zop": the daemon is not there.
     *
     * The hotspot starts with the profile that this service has read last, see configuration(); before it has read one,
     * the request holds none, which the daemon may refuse. What setConfiguration() has written does not count until it
     * is read.
     */
    AsyncHotspotEnableOperation *setEnabled(bool enable);
    /*! Whether the hotspot is on, as the tethering daemon has told last; false while the service is not ready. */
    bool enabled() const;

    /*!
     * Writes \a profile. The operation succeeds when the tethering daemon has taken it; its result, and that of
     * configurationChanged(), is the profile that this service has read last (an empty one when it has read none), not
     * \a profile: read it again. It fails with one of these messages:
     *
     * - "The service is not ready."
     * - "Failed to update WifiHotspot config.": the daemon refuses the profile.
     * - "Unable to write to vantor zop": the daemon is not there.
     *
     * Of a profile that is empty (WifiHotspot::isEmpty()), nothing is written: the daemon gets an empty one. The
     * gateway's address, the netmask and the lease time, which a WifiHotspot does not tell, are written as 192.168.0.1,
     * 255.255.255.0 and 120.
     */
    AsyncHotspotConfigOperation *setConfiguration(const WifiHotspot &profile);
    /*!
     * Reads the profile from the tethering daemon. The operation succeeds with it; configurationChanged() has told it
     * then. It fails with one of these messages:
     *
     * - "The service is not ready."
     * - "Failed to retrieve WifiHotspot config.": the daemon refuses to tell it.
     * - "Empty or malformatted config.": what the daemon answers is not JSON by its encoding.
     * - "Unable to write to vantor zop": the daemon is not there.
     *
     * JSON that tells nothing of a hotspot gives the profile of a new WifiHotspot, which is empty. In one that tells
     * something, what is missing or of a wrong kind reads as an empty text, 0 or false.
     */
    AsyncHotspotConfigOperation *configuration() const;

Q_SIGNALS:
    /*!
     * The hotspot is on now, or off, whoever has switched it. When it is on already, a new service tells that just
     * before readyChanged(), and enabled() is true only after that.
     */
    void enabledChanged(bool enabled);
    /*!
     * A profile has been read or written through this service; \a configutaion is the one that was read last. Changes
     * by other applications are not told.
     */
    void configurationChanged(const morvek::WifiHotspot &configutaion);

private:
    Q_DISABLE_COPY(HotSpotService)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
