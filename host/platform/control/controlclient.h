// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_CONTROLCLIENT_H
#define MORVEK_CONTROLCLIENT_H

#include "zopbackend.h"
#include "zoppath.h"

#include <QtCore/QMap>
#include <QtCore/QObject>

namespace morvek {

class ControlLink;

/*!
 * A client's end of a control object. It connects once more with the first request after the daemon has died, and
 * ends the requests that the dead daemon owed a reply.
 */
class ControlClient : public QObject, public ZopBackend
{
    Q_OBJECT

public:
    /*! Told the reply, after which the client may be gone; or null when there will be none, where it must stay. */
    using Answer = std::function<void(const ZopChangeset *reply)>;

    ControlClient(const ZopPath &path, Tell tell);
    ~ControlClient() override;

    /*! Connects; false when no daemon serves the object. */
    bool start(QString *error) override;

    /*!
     * Writes a request. When the daemon dies before it has replied, that is told as a refusal. Its identifier must not
     * be one of those that send() gives.
     */
    bool check(QString *) override { return true; }
    bool write(const ZopChangeset &changes, QString *error) override;

    /*! Writes \a request under an \a id of its own, and awaits the reply with that id. */
    bool send(ZopChangeset request, const Answer &answer, int *id, QString *error);

private:
    struct Pending
    {
        Answer answer;
        ControlLink *link;
    };

    struct Written
    {
        ZopVariant message;
        ControlLink *link;
    };

    bool deliver(const ZopChangeset &changes, QString *error);
    void onReceived(const ZopChangeset &changes);
    void onClosed(ControlLink *link);

    ZopPath m_path;
    ControlLink *m_link = nullptr;
    QMap<int, Pending> m_pending;
    QMap<int, Written> m_written; //!< what awaits a reply, by the identifier that its writer has chosen
    int m_lastId = 0;
};

} // namespace morvek

#endif
