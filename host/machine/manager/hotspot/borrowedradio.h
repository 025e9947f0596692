// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_BORROWEDRADIO_H
#define MORVEK_HOSTD_BORROWEDRADIO_H

#include "gobject.h"

#include <QtCore/QString>

namespace morvek {

class ManagerClient;
class RadioLoan;
class Restoration;

/*! The radio that a hotspot has taken. */
class BorrowedRadio
{
public:
    /*! All of them must outlive this; \a loan may be null. */
    BorrowedRadio(ManagerClient *client, Restoration *restoration, RadioLoan *loan);

    /*! Gives another one back first. */
    void take(NMDeviceWifi *radio);
    /*! Has it connected as it was, unless somebody has already put it to another use. */
    void giveBack(bool isUsedOtherwise = false);

    QString interface() const { return m_interface; }
    /*! Null when it is not there, or none was taken. */
    NMDeviceWifi *get() const;

private:
    ManagerClient *m_client;
    Restoration *m_restoration;
    RadioLoan *m_loan;
    QString m_interface; // empty while none is taken
};

} // namespace morvek

#endif
