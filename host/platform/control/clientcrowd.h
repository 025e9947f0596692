// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_CLIENTCROWD_H
#define MORVEK_CLIENTCROWD_H

#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtCore/QString>

#include <memory>
#include <vector>

#include <sys/types.h>

namespace morvek {

class ControlLink;

/*!
 * The clients of all control objects that this thread serves: none takes up the connections and the memory that are
 * there for all. What a client is denied is told once, for as long as it has connections.
 */
class ClientCrowd
{
public:
    /*! The thread's own, for as long as anybody keeps it. */
    static std::shared_ptr<ClientCrowd> instance();

    /*! Takes \a link to the process \a client in, unless the client, or all, have as many as they may. */
    bool admit(ControlLink *link, pid_t client);
    /*! Ends connections, the largest of the largest client first, until what waits in all of them is within bounds. */
    void makeRoom();

private:
    struct Member
    {
        QPointer<ControlLink> link;
        pid_t client;
    };

    void forgetTheGone();
    qint64 held() const;
    Member largest() const;

    std::vector<Member> m_members;
    QSet<pid_t> m_told; // who was told of, or everybody
};

} // namespace morvek

#endif
