// SPDX-License-Identifier: Apache-2.0
#include "hotspotapply_p.h"

#include "hotspotswitch_p.h"

#include <algorithm>

namespace morvek {

HotspotApply::HotspotApply(Hotspot *controller)
    : HotspotRequest(controller, 15000),
      m_form(new HotspotForm)
{
}

void HotspotApply::start()
{
    const QVector<HotspotSwitch *> switches = controller()->open<HotspotSwitch>();
    const bool isStarting =
        std::any_of(switches.begin(), switches.end(), [](const HotspotSwitch *other) { return other->isOn(); });
    controller()->copyForm(m_form.get());
    if (controller()->open<HotspotApply>().size() > 1)
        fail(Busy, tr("The settings of the hotspot are being changed already."));
    else if (isStarting) // with the settings of before, or with these: nobody could tell
        fail(Busy, tr("The hotspot is being switched on."));
    else if (!controller()->fields().isRead())
        fail(Invalid, tr("The settings of the hotspot have not been read yet."));
    else if (isValid())
        fetch([this](const WifiHotspot &present) { change(present); });
}

/*! Ends this when it is not. */
bool HotspotApply::isValid()
{
    const QString texts[] = {m_form->nameText(), m_form->securityText(), m_form->passphraseText(),
                             m_form->maxClientsText(), m_form->inactivityTimeText()};
    for (const QString &text : texts) {
        if (text.isEmpty())
            continue;
        fail(Invalid, text);
        return false;
    }
    return true;
}

void HotspotApply::change(const WifiHotspot &present)
{
    m_form->read(present);
    if (!isValid()) // any more
        return;
    const KeptProfile kept(present);
    m_wanted = Hotspot::applied(*m_form, kept);
    // What the library takes for empty, though it is not, is written as it takes it.
    if (m_wanted == kept && !present.isEmpty()) {
        succeed();
        return;
    }
    m_isWritten = true;
    write(m_wanted, [this] {
        m_isTaken = true;
        fetch([this](const WifiHotspot &now) { compare(now); });
    });
}

void HotspotApply::compare(const WifiHotspot &now)
{
    if (KeptProfile(now) == m_wanted)
        succeed();
    else
        fail(Overtaken, tr("The settings are not what was asked for: another application may have changed them."));
}

QString HotspotApply::giveUp(Failure why)
{
    if (m_isTaken)
        return early(why, tr("The settings were changed, but not read again."));
    return early(why, m_isWritten ? tr("The settings may still be changed.") : tr("No settings were changed."));
}

void HotspotApply::release()
{
    HotspotRequest::release();
    m_form.reset();
    m_wanted = KeptProfile();
}

QString HotspotApply::refusal() const
{
    if (m_isTaken)
        return tr("The settings were changed, but cannot be read again.");
    return m_isWritten ? tr("The hotspot service refuses these settings.")
                       : tr("No settings were changed: those of now cannot be read.");
}

} // namespace morvek
