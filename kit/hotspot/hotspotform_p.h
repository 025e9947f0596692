// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTFORM_P_H
#define MORVEK_HOTSPOTFORM_P_H

#include "hotspotfields_p.h"
#include "hotspotform.h"

namespace morvek {

class HotspotForm::Private
{
public:
    /*! Has \a change done, and tells it when it shows. */
    template<typename Change>
    void change(const Change &change);
    /*! \a set has the edited value of \a field written to a profile. */
    template<typename Set>
    void edit(HotspotFields::Field field, const Set &set);

    HotspotForm *q = nullptr;
    HotspotFields fields;
};

} // namespace morvek

#endif
