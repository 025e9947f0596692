// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_PLAYEDTETHERING_H
#define MORVEK_TEST_PLAYEDTETHERING_H

#include "playeddaemon.h"

#include <zopchangeset.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <memory>

/*! A tethering daemon in this process, which answers, refuses or keeps silent as its test says. */
class PlayedTethering : public QObject
{
public:
    using Attributes = QMap<QString, morvek::ZopVariant>;

    PlayedTethering() { comeBack(); }

    void die() { m_daemon.reset(); }
    void comeBack()
    {
        m_daemon = std::make_unique<PlayedDaemon>(PlayedDaemon::Tethering);
        setActive(isActive);
        connect(&m_daemon->control(), &morvek::ZopObject::attributesChanged, this, &PlayedTethering::hear);
    }

    /*! The hotspot, as the car's profile has it at first. */
    QJsonObject profile {{QStringLiteral("ssid"), QStringLiteral("Morvek Car")},
                         {QStringLiteral("passphrase"), QStringLiteral("drive safely 8")},
                         {QStringLiteral("mhs_band"), QStringLiteral("5.0")},
                         {QStringLiteral("max_num_sta"), 10},
                         {QStringLiteral("security_type"), QStringLiteral("wpa2")},
                         {QStringLiteral("autoshutdown_time"), 600},
                         {QStringLiteral("privacy"), false},
                         {QStringLiteral("block_conn"), false}};
    bool isActive = false;
    /*! Whether it does what it has accepted. */
    bool performs = true;
    /*! The messages that are not answered now, and what is answered to others when it is no success. */
    QStringList silentTo;
    QMap<QString, Attributes> answers;
    /*! What was requested, with the name of the hotspot where there is one: "start Morvek Car". */
    QStringList requests;

    /*! One attribute of the profile, as another application changes it. */
    void change(const char *key, const QJsonValue &value) { profile.insert(QLatin1String(key), value); }
    void setActive(bool active)
    {
        isActive = active;
        m_daemon->status().setAttributes(
            {{{QStringLiteral("state"), active ? QStringLiteral("ACTIVE") : QStringLiteral("INACTIVE")}}, {}});
    }
    void refuse(const char *message)
    {
        answers.insert(
            QLatin1String(message),
            {{QStringLiteral("err"), QStringLiteral("16")}, {QStringLiteral("errmsg"), QStringLiteral("busy")}});
    }
    /*! Answers to \a message from now on, and to what it has been silent to. */
    void speak(const char *message)
    {
        silentTo.removeAll(QLatin1String(message));
        for (const morvek::ZopChangeset &request : std::exchange(m_unanswered, {}))
            answer(request);
    }

private:
    void hear(const morvek::ZopChangeset &request)
    {
        const QJsonObject hotspot = profileIn(request);
        const QString message = textOf(request, "msg");
        requests +=
            hotspot.isEmpty() ? message : message + QLatin1Char(' ') + hotspot.value(QLatin1String("ssid")).toString();
        answer(request);
    }

    void answer(const morvek::ZopChangeset &request)
    {
        const QString message = textOf(request, "msg");
        if (silentTo.contains(message)) {
            m_unanswered += request;
            return;
        }
        const bool succeeds = !answers.contains(message);
        morvek::ZopChangeset reply {{{QStringLiteral("res"), message}, {QStringLiteral("err"), QStringLiteral("0")}},
                                    {}};
        if (message == QLatin1String("retrieve_profile"))
            reply.assignments.insert(QStringLiteral("dat"), QJsonObject {{QStringLiteral("lanprofile"), profile}});
        const Attributes told = answers.value(message);
        for (auto it = told.begin(); it != told.end(); ++it)
            reply.assignments.insert(it.key(), it.value());
        for (const char *key : {"id", "peer"})
            reply.assignments.insert(QLatin1String(key), request.assignments.value(QLatin1String(key)));
        if (succeeds && message == QLatin1String("update_profile"))
            profile = profileIn(request);
        m_daemon->control().setAttributes(reply);
        if (succeeds && performs && (message == QLatin1String("start") || message == QLatin1String("stop")))
            setActive(message == QLatin1String("start"));
    }

    static QString textOf(const morvek::ZopChangeset &request, const char *name)
    {
        return request.assignments.value(QLatin1String(name)).toString();
    }
    static QJsonObject profileIn(const morvek::ZopChangeset &request)
    {
        const QJsonDocument document = request.assignments.value(QStringLiteral("dat")).toJson();
        return document.object().value(QLatin1String("lanprofile")).toObject();
    }

    std::unique_ptr<PlayedDaemon> m_daemon;
    QVector<morvek::ZopChangeset> m_unanswered;
};

#endif
