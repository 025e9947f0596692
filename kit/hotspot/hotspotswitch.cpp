// SPDX-License-Identifier: Apache-2.0
#include "hotspotswitch_p.h"

#include "hotspotapply_p.h"

#include <utility>

namespace morvek {

HotspotSwitch::HotspotSwitch(Hotspot *controller, bool on)
    : HotspotRequest(controller, 20000),
      m_on(on)
{
}

void HotspotSwitch::start()
{
    // It might start with the profile of before.
    if (m_on && !controller()->open<HotspotApply>().isEmpty()) {
        fail(Busy, tr("The settings of the hotspot are being changed."));
        return;
    }
    m_isUnderWay = true;
    for (HotspotSwitch *other : controller()->open<HotspotSwitch>()) {
        if (other->m_on == m_on)
            continue;
        m_isReversal = true;
        other->overtake();
    }
    // To stop it is asked for in any case: somebody may have had it started, which nothing tells yet.
    if (!m_on)
        request();
    else if (controller()->isOn && !m_isReversal)
        comeTrue();
    else
        fetch([this](const WifiHotspot &profile) { startWith(profile, false); });
}

void HotspotSwitch::startWith(const WifiHotspot &profile, bool isWritten)
{
    const KeptProfile kept(profile);
    WifiHotspot whole = kept.whole();
    const bool isComplete = !whole.isEmpty();
    KeptProfile::wipe(&whole);
    HotspotForm form;
    form.read(profile);
    if (!isComplete || form.securityFault() != HotspotForm::NoFault)
        fail(Invalid, tr("The hotspot cannot start: its settings are not complete."));
    else if (profile.isEmpty() && !isWritten) // it is open, and the library sends it as it reads it: not at all
        write(kept, [this] { fetch([this](const WifiHotspot &written) { startWith(written, true); }); });
    else
        request();
}

void HotspotSwitch::request()
{
    m_isAsked = true;
    switchTo(m_on, [this] { onAccepted(); });
}

void HotspotSwitch::onAccepted()
{
    m_isAccepted = true;
    if (controller()->isOn == m_on)
        comeTrue();
}

void HotspotSwitch::onEnabledChanged(bool on)
{
    if (on == m_on)
        comeTrue();
    else if (m_hasComeTrue)
        fail(Overtaken, m_on ? tr("The hotspot was switched off again.") : tr("The hotspot was switched on again."));
}

// What follows at once may be the opposite.
void HotspotSwitch::comeTrue()
{
    if (std::exchange(m_hasComeTrue, true))
        return;
    QMetaObject::invokeMethod(
        this, [this] { succeed(); }, Qt::QueuedConnection);
}

void HotspotSwitch::overtake()
{
    fail(Overtaken,
         m_on ? tr("The hotspot is to be switched off instead.") : tr("The hotspot is to be switched on instead."));
}

QString HotspotSwitch::giveUp(Failure why)
{
    if (!m_isAsked)
        return early(why, m_on ? tr("The hotspot was not switched on.") : tr("The hotspot was not switched off."));
    if (why == TimedOut && m_isAccepted)
        return m_on ? tr("The hotspot has not come on in time. It still may.")
                    : tr("The hotspot has not gone off in time. It still may.");
    return early(why, m_on ? tr("The hotspot may still come on.") : tr("The hotspot may still go off."));
}

// What is off cannot be stopped.
void HotspotSwitch::onRefused(const AsyncOperationError &error)
{
    if (!m_on && !controller()->isOn && !m_isReversal)
        comeTrue();
    else
        HotspotRequest::onRefused(error);
}

QString HotspotSwitch::refusal() const
{
    if (!m_isAsked)
        return tr("The hotspot was not switched on: its settings cannot be read.");
    return m_on ? tr("The hotspot service refuses to switch on.") : tr("The hotspot service refuses to switch off.");
}

} // namespace morvek
