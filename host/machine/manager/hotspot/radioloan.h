// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_RADIOLOAN_H
#define MORVEK_HOSTD_RADIOLOAN_H

#include <QtCore/QString>

namespace morvek {

/*! Whoever joins networks with a radio that a hotspot may take. */
class RadioLoan
{
public:
    virtual ~RadioLoan() = default;

    /*! The radio \a interface is about to become an access point: until it is taken back, nothing is joined with it. */
    virtual void lend(const QString &interface) = 0;
    /*! It is an access point no more, and may be gone. True when a network is joined with it again. */
    virtual bool takeBack(const QString &interface) = 0;
};

} // namespace morvek

#endif
