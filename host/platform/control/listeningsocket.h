// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_LISTENINGSOCKET_H
#define MORVEK_LISTENINGSOCKET_H

#include "filedescriptor.h"
#include "zoppath.h"

#include <functional>
#include <memory>

#include <sys/stat.h>

class QSocketNotifier;

namespace morvek {

/*!
 * A socket that clients of this user find at a file. What a killed process has left at that file makes way, what is
 * served does not. The file goes with the socket, unless it is another one by then.
 */
class ListeningSocket
{
public:
    using Admit = std::function<void(FileDescriptor socket, pid_t client)>;

    /*! At the file \a name in the folder of \a path; \a admit gets who comes. */
    ListeningSocket(const ZopPath &path, const QByteArray &name, Admit admit);
    ~ListeningSocket();

    /*! Whether nobody serves the file; false, too, when that cannot be told. Both need the folder's lock. */
    bool isFree(QString *error) const;
    /*! Takes the file. Whoever is connected stays so. */
    bool listen(QString *error);
    /*! Whether clients find it. */
    bool isInPlace() const;
    /*! Takes the file if that is free, under the folder's lock, unless clients find it anyway. */
    bool keep(QString *error);

private:
    Q_DISABLE_COPY(ListeningSocket)
    void accept();

    ZopPath m_path;
    QByteArray m_name;
    FilePlace m_place;
    Admit m_admit;
    FileDescriptor m_listener;
    struct stat m_socket = {}; // the file that stands for the listener
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace morvek

#endif
