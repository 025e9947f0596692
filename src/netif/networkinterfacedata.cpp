// SPDX-License-Identifier: Apache-2.0
#include "networkinterfacedata.h"

namespace morvek {

namespace {

/*! Equal in every field but the parent. */
bool sameFields(const NetworkInterfaceData &left, const NetworkInterfaceData &right)
{
    return left.name == right.name && left.priority == right.priority && left.configuration == right.configuration
        && left.type == right.type && left.macAddress == right.macAddress
        && left.maxTransmissionUnit == right.maxTransmissionUnit && left.available == right.available
        && left.connected == right.connected && left.isVirtual == right.isVirtual;
}

/*!
 * Ends a walk up two chains of parents that a faulty daemon has closed to a circle. It remembers one pair of
 * records, a later one each time that the walk has become twice as long, so it meets any circle again.
 */
class CircleGuard
{
public:
    bool meetsAgain(const NetworkInterfaceData *left, const NetworkInterfaceData *right)
    {
        if (m_left == left && m_right == right)
            return true;
        if (++m_steps == m_limit) {
            m_limit *= 2;
            m_left = left;
            m_right = right;
        }
        return false;
    }

private:
    const NetworkInterfaceData *m_left = nullptr;
    const NetworkInterfaceData *m_right = nullptr;
    unsigned int m_steps = 0;
    unsigned int m_limit = 1;
};

} // namespace

NetworkInterfaceData::ParentLink::ParentLink(NetworkInterfaceData *record)
{
    if (record)
        m_record = record->m_identity.of(record);
}

bool NetworkInterfaceData::operator==(const NetworkInterfaceData &other) const
{
    const NetworkInterfaceData *left = this;
    const NetworkInterfaceData *right = &other;
    CircleGuard guard;
    while (left != right && !guard.meetsAgain(left, right)) {
        if (!left || !right || !sameFields(*left, *right))
            return false;
        left = left->parent;
        right = right->parent;
    }
    return true;
}

// An interface without a parent answers parent() with an empty one, so that is what a record's parent meets then.
bool NetworkInterfaceData::operator==(const NetworkInterface &networkInterface) const
{
    const NetworkInterfaceData none;
    const NetworkInterfaceData *left = this;
    const NetworkInterfaceData *right = &networkInterface.d->data;
    CircleGuard guard;
    while (left && !guard.meetsAgain(left, right)) {
        if (!sameFields(*left, *right))
            return false;
        left = left->parent;
        right = right->parent ? right->parent : &none;
    }
    return left || right->isEmpty();
}

bool NetworkInterfaceData::isEmpty() const
{
    return sameFields(*this, NetworkInterfaceData()) && !parent;
}

QWeakPointer<NetworkInterfaceData> NetworkInterfaceData::Identity::of(NetworkInterfaceData *record)
{
    if (!m_self)
        m_self.reset(record, [](NetworkInterfaceData *) {});
    return m_self;
}

} // namespace morvek
