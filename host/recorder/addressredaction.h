// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ADDRESSREDACTION_H
#define MORVEK_ADDRESSREDACTION_H

#include <QtCore/QMap>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace morvek {

/*!
 * Puts IP addresses that nobody has in the place of others: of the blocks that are reserved for documentation, and when
 * these are used up, for tests. The same one always gets the same one. Addresses of one network get addresses of one
 * network, which have the same netmask; those of different ones do not, as far as the blocks reach.
 */
class AddressRedaction
{
public:
    /*!
     * \a text is an address, which may be followed by a slash and a netmask or a prefix's length. Empty when it is
     * none.
     */
    QString replace(const QString &text);

private:
    struct Network
    {
        QByteArray bits; // of the network's own part, the rest is zero
        int prefix;
        QByteArray substitute;
        int hosts; // that have got an address
    };

    // No prefix, -1, is told.
    QByteArray substituteOf(const QByteArray &address, int prefix);
    Network *networkOf(const QByteArray &address, int prefix);
    QByteArray freeBlock(const QByteArray &bits, int prefix) const;

    QVector<Network> m_networks;
    QMap<QByteArray, QByteArray> m_substitutes;
};

} // namespace morvek

#endif
