// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_ADDRESSTEXT_H
#define MORVEK_HOSTD_ADDRESSTEXT_H

#include <QtCore/QString>

namespace morvek {

/*! Reads IP addresses in the one spelling that stands in the networking daemon's objects. */
namespace AddressText {

/*! Four decimal numbers with dots and nothing else, unlike what the C library reads ("10.1", "0x7f.1"). */
bool isIpv4(const QString &text, quint32 *address = nullptr);
/*! An IPv4 address whose set bits are all on the left, at least one. */
bool isNetmask(const QString &text, quint32 *netmask = nullptr);
/*! An IPv4 address that a host can have: not this host's, no group's, not everybody's. */
bool isHostAddress(const QString &text, quint32 *address = nullptr);
/*! "192.168.0.2/255.255.255.0", "192.168.0.2/24", which stands for the same, or "fe80::1/64". */
bool isInterfaceAddress(const QString &text, QString *published = nullptr);
/*! An IPv4 or IPv6 address. */
bool isGateway(const QString &text);

} // namespace AddressText

} // namespace morvek

#endif
