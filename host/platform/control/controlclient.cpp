// SPDX-License-Identifier: Apache-2.0
#include "controlclient.h"

#include "controllink.h"
#include "localsocket.h"

#include <QtCore/QPointer>

namespace morvek {

namespace {

QString idName()
{
    return QStringLiteral("id");
}

/*! Those of \a requests that \a link has carried. */
template<typename Requests>
Requests takeThoseOf(const ControlLink *link, Requests *requests)
{
    Requests taken;
    for (auto it = requests->begin(); it != requests->end();) {
        if (it->link == link) {
            taken.insert(it.key(), *it);
            it = requests->erase(it);
        } else {
            ++it;
        }
    }
    return taken;
}

} // namespace

ControlClient::ControlClient(const ZopPath &path, Tell tell)
    : ZopBackend(std::move(tell)),
      m_path(path)
{
}

ControlClient::~ControlClient()
{
    for (const Pending &pending : qAsConst(m_pending))
        pending.answer(nullptr);
}

bool ControlClient::start(QString *error)
{
    FileDescriptor socket = LocalSocket::connectTo(m_path, m_path.name(), error);
    if (!socket.isOpen())
        return false;
    auto *link = new ControlLink(std::move(socket), m_path, this);
    connect(link, &ControlLink::received, this, &ControlClient::onReceived);
    // Queued, as a connection may be found closed while a request is being written.
    connect(
        link, &ControlLink::closed, this, [this, link] { onClosed(link); }, Qt::QueuedConnection);
    m_link = link;
    return true;
}

bool ControlClient::write(const ZopChangeset &changes, QString *error)
{
    if (!deliver(changes, error))
        return false;
    const ZopVariant message = changes.assignments.value(QStringLiteral("msg"));
    const ZopVariant id = changes.assignments.value(idName());
    if (message.isValid() && id.isValid())
        m_written.insert(id.toInt(), {message, m_link});
    return true;
}

bool ControlClient::deliver(const ZopChangeset &changes, QString *error)
{
    bool isSent = m_link && m_link->send(changes);
    // A link whose daemon is dead still tells what the daemon had sent, and goes when it is found closed.
    if (!isSent && (!m_link || !m_link->isAlive())) {
        if (!start(error))
            return false;
        isSent = m_link->send(changes);
    }
    if (!isSent)
        *error = QStringLiteral("the daemon does not take the request");
    return isSent;
}

bool ControlClient::send(ZopChangeset request, const Answer &answer, int *id, QString *error)
{
    *id = ++m_lastId;
    request.assignments.insert(idName(), ZopVariant(*id));
    if (!deliver(request, error))
        return false;
    m_pending.insert(*id, {answer, m_link});
    return true;
}

void ControlClient::onReceived(const ZopChangeset &changes)
{
    const int id = changes.assignments.value(idName()).toInt();
    if (changes.assignments.contains(QStringLiteral("res")))
        m_written.remove(id);
    const QPointer<ControlClient> guard(this);
    tell(changes);
    if (!guard)
        return;
    const auto pending = m_pending.find(id);
    if (pending == m_pending.end())
        return;
    const Answer answer = pending->answer;
    m_pending.erase(pending);
    answer(&changes);
}

void ControlClient::onClosed(ControlLink *link)
{
    if (m_link == link)
        m_link = nullptr;
    link->deleteLater();
    const auto pending = takeThoseOf(link, &m_pending);
    for (const Pending &one : pending)
        one.answer(nullptr);
    const auto written = takeThoseOf(link, &m_written);
    const QPointer<ControlClient> guard(this);
    for (auto it = written.begin(); it != written.end() && guard; ++it)
        tell(ControlLink::refusal(it->message, ZopVariant(it.key()), QStringLiteral("the daemon is gone")));
}

} // namespace morvek
