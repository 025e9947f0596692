// SPDX-License-Identifier: Apache-2.0
// Replies and states of the tethering manager. A script: "fetch", "update", "start" and "stop" ask for something;
// "NAME VALUE" lines collect a reply, in which "of N" is the identifier of the request N and "json VALUE" a payload
// that says that it is JSON; "reply" sends it. "state VALUE" changes the status. A model says how each request ends.
#include "fuzz.h"
#include "hotspotproviderfixture.h"
#include "logcapture.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace morvek;

namespace {

struct Request
{
    std::unique_ptr<Pending> pending;
    QString expected;
};

bool isAscii(const QByteArray &bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c >= 0; });
}

class Play
{
public:
    void line(Fuzz::Line line)
    {
        if (line.word == "fetch")
            ask("retrieve_profile");
        else if (line.word == "update")
            ask("update_profile");
        else if (line.word == "start" || line.word == "stop")
            ask(line.word.constData());
        else if (line.word == "state")
            state(line.rest);
        else if (line.word == "of")
            replyTo(line.next().toInt());
        else if (line.word == "json")
            m_reply.insert(QStringLiteral("dat"), ZopVariant(line.rest, "json"));
        else if (line.word == "reply")
            reply();
        else if (line.word != "id" || isAscii(line.rest))
            m_reply.insert(Fuzz::text(line.word), raw(line.rest));
        check();
    }

    void end() const
    {
        for (const Request &request : m_requests)
            Fuzz::expectEqual(request.pending->end(), request.expected, "how a request ends");
    }

private:
    void ask(const char *name)
    {
        m_requests.push_back({std::make_unique<Pending>(*m_fixture.provider, QLatin1String(name)), QString()});
        m_log.take(); // a profile that is empty
    }

    void state(const QByteArray &value)
    {
        TetheringDaemon::change("state", raw(value));
        if (value != "ACTIVE" && value != "INACTIVE")
            return;
        if (m_enabled != (value == "ACTIVE"))
            m_events.append(value == "ACTIVE" ? QStringLiteral("on") : QStringLiteral("off"));
        m_enabled = value == "ACTIVE";
    }

    void replyTo(int index)
    {
        if (index >= 0 && index < int(m_requests.size()))
            m_reply.insert(QStringLiteral("id"), ZopVariant(m_requests[size_t(index)].pending->id));
    }

    QString field(const char *name) const { return Fuzz::text(m_reply.value(QLatin1String(name)).bytes()); }

    Request *waiting()
    {
        int id = 0;
        if (!Fuzz::readNumber(field("id"), &id))
            id = 0;
        for (Request &request : m_requests) {
            if (request.pending->id == id && request.expected.isEmpty())
                return &request;
        }
        m_lines.append(QStringLiteral("warning 1300 No operation for message with id:%1").arg(id));
        return nullptr;
    }

    void refuse(Request *request, const char *text, const QString &detail = QString())
    {
        request->expected = QLatin1String("failure -1 ") + QLatin1String(text);
        m_lines.append(QLatin1String("warning 1300 ") + QLatin1String(text) + Fuzz::printed(detail));
    }

    void tellProfile(Request *request)
    {
        request->expected = QLatin1String("success ") + (request->pending->config ? m_profile : QString());
        m_events.append(QLatin1String("profile ") + m_profile);
    }

    void fetched(Request *request)
    {
        const ZopVariant dat = m_reply.value(QStringLiteral("dat"));
        if (!field("errmsg").isEmpty()) {
            refuse(request, "Failed to retrieve WifiHotspot config.");
        } else if (dat.encoding() != "json") {
            refuse(request, "Empty or malformatted config.");
        } else {
            const QJsonObject profile = QJsonDocument::fromJson(dat.bytes()).object();
            m_profile = profile.value(QLatin1String("lanprofile")).toObject().value(QLatin1String("ssid")).toString();
            tellProfile(request);
        }
    }

    void expectReply()
    {
        const QString res = field("res");
        const bool known = res == QLatin1String("retrieve_profile") || res == QLatin1String("update_profile")
            || res == QLatin1String("start") || res == QLatin1String("stop");
        Request *request = known ? waiting() : nullptr;
        if (!request)
            return;
        const bool accepted = field("errmsg").isEmpty() && field("err") == QLatin1String("0");
        const bool start = res == QLatin1String("start");
        if (res == QLatin1String("retrieve_profile"))
            fetched(request);
        else if (res == QLatin1String("update_profile") && accepted)
            tellProfile(request);
        else if (res == QLatin1String("update_profile"))
            refuse(request, "Failed to update WifiHotspot config.", field("errmsg"));
        else if (accepted)
            request->expected = QLatin1String("success ")
                + (request->pending->enable ? (start ? QStringLiteral("true") : QStringLiteral("false")) : QString());
        else
            refuse(request, start ? "Failed to enable config." : "Failed to disable config.");
    }

    void reply()
    {
        expectReply();
        TetheringDaemon::tell(m_reply);
        m_reply.clear();
    }

    void check()
    {
        Fuzz::expectEqual(m_fixture.events->take(), m_events, "the signals");
        Fuzz::expectEqual(m_log.take(), m_lines, "the log");
        Fuzz::expectEqual(m_fixture.provider->enabled(), m_enabled, "whether the hotspot is on");
        m_events.clear();
        m_lines.clear();
    }

    LogCapture m_log {3};
    HotspotProviderFixture m_fixture;
    std::vector<Request> m_requests;
    ZopDouble::Values m_reply;
    bool m_enabled = false;
    QString m_profile;
    QStringList m_events;
    QStringList m_lines;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ZopDouble::reset();
    Play play;
    const QList<Fuzz::Line> lines = Fuzz::script(data, size);
    for (const Fuzz::Line &line : lines)
        play.line(line);
    play.end();
    return 0;
}
