// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_NETLINKDUMP_H
#define MORVEK_HOSTD_NETLINKDUMP_H

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>

#include <cstring>
#include <functional>

namespace morvek {

/*! One list of the kernel's, read over rtnetlink or another protocol of netlink. */
namespace NetlinkDump {

/*! Takes the body of one message, behind the netlink header. */
using Consumer = std::function<void(const QByteArray &body)>;

/*!
 * Asks for the list \a type (such as RTM_GETLINK) of \a family; \a headerSize bytes of zeros follow the family.
 * \a entries is filled when the whole list has come, and from one consistent state of the kernel.
 */
bool read(quint16 type, unsigned char family, int headerSize, QString *error, const Consumer &consumer);

/*! The same for a list of \a protocol; \a request is what follows the netlink header. */
bool read(int protocol, quint16 type, const QByteArray &request, QString *error, const Consumer &consumer);

/*! The attributes in \a bytes by their type. */
QMap<int, QByteArray> attributes(const QByteArray &bytes);

/*! As above, with the fixed part of each message and its attributes told apart. */
template<typename Header, typename Function>
bool read(quint16 type, unsigned char family, QString *error, const Function &function)
{
    return read(type, family, int(sizeof(Header)), error, [&function](const QByteArray &body) {
        Header header;
        if (body.size() < int(sizeof header))
            return;
        std::memcpy(&header, body.constData(), sizeof header);
        function(header, attributes(body.mid(int(sizeof header))));
    });
}

} // namespace NetlinkDump

} // namespace morvek

#endif
