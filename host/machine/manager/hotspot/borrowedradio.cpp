// SPDX-License-Identifier: Apache-2.0
#include "borrowedradio.h"

#include "hotspotplace.h"
#include "radioloan.h"
#include "restoration.h"

namespace morvek {

BorrowedRadio::BorrowedRadio(ManagerClient *client, Restoration *restoration, RadioLoan *loan)
    : m_client(client),
      m_restoration(restoration),
      m_loan(loan)
{
}

void BorrowedRadio::take(NMDeviceWifi *radio)
{
    const QString interface = ManagerClient::nameOf(NM_DEVICE(radio));
    if (interface == m_interface)
        return;
    giveBack();
    m_interface = interface;
    if (m_loan)
        m_loan->lend(interface);
}

void BorrowedRadio::giveBack(bool isUsedOtherwise)
{
    if (m_interface.isEmpty())
        return;
    NMDeviceWifi *radio = get();
    const bool joins = m_loan && m_loan->takeBack(m_interface);
    m_interface.clear();
    if (radio && !joins && !isUsedOtherwise && !HotspotPlace::objection(*m_client, radio))
        m_restoration->giveConnectionBack(NM_DEVICE(radio));
}

NMDeviceWifi *BorrowedRadio::get() const
{
    NMDevice *device = m_interface.isEmpty() ? nullptr : m_client->device(m_interface);
    return device && NM_IS_DEVICE_WIFI(device) ? NM_DEVICE_WIFI(device) : nullptr;
}

} // namespace morvek
