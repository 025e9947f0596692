// SPDX-License-Identifier: Apache-2.0
#include "stagecommand.h"

#include "faultreader.h"
#include "hostdoptions.h"
#include "stagecall.h"
#include "stagewords.h"
#include "timelinereader.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QThread>

#include <chrono>
#include <cstdio>
#include <iostream>
#include <string>

namespace morvek {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds WaitPause = 20ms;

const QString Wait = QStringLiteral("wait");

QDeadlineTimer deadlineOf(const HostdOptions &options)
{
    return QDeadlineTimer(qRound64(options.timeout * 1000));
}

bool isDone(const QByteArray &answer)
{
    return QJsonDocument::fromJson(answer).object().value(StageWords::Done).toBool();
}

void print(const QByteArray &text)
{
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    std::fflush(stdout);
}

/*! Until it is ready: the stage is there when everything is published. */
HostdExitCode wait(const HostdOptions &options, QString *error)
{
    const QDeadlineTimer deadline = deadlineOf(options);
    for (;;) {
        StageCall call;
        QByteArray answer;
        if (call.connect(error) && call.ask("{\"look\":\"daemons\"}", deadline, &answer, error))
            return HostdExitCode::Success;
        if (deadline.hasExpired() || !StageCall::isPossible(error))
            return HostdExitCode::NotRunning;
        QThread::msleep(WaitPause.count());
    }
}

/*! Lines from standard input, each answered by one on standard output. */
HostdExitCode pipe(const HostdOptions &options, StageCall *call, QString *error)
{
    HostdExitCode code = HostdExitCode::Success;
    for (std::string line; std::getline(std::cin, line);) {
        QByteArray answer;
        if (!call->ask(QByteArray::fromStdString(line), deadlineOf(options), &answer, error))
            return HostdExitCode::NotRunning;
        print(answer + '\n');
        if (!isDone(answer))
            code = HostdExitCode::NotDone;
    }
    if (code != HostdExitCode::Success)
        *error = QStringLiteral("not everything was done");
    return code;
}

HostdExitCode ask(const HostdOptions &options, StageCall *call, const QByteArray &request, QString *error)
{
    QByteArray answer;
    if (!call->ask(request, deadlineOf(options), &answer, error))
        return HostdExitCode::NotRunning;
    QJsonObject object = QJsonDocument::fromJson(answer).object();
    if (!object.take(StageWords::Done).toBool()) {
        *error = object.value(StageWords::Reason).toString();
        return HostdExitCode::NotDone;
    }
    print(object.isEmpty() ? StageWords::Done.toUtf8() + '\n' : QJsonDocument(object).toJson());
    return HostdExitCode::Success;
}

} // namespace

QStringList StageCommand::verbs()
{
    return {StageWords::Act, StageWords::Look, StageWords::Pass, Wait};
}

QStringList StageCommand::candidates(const QStringList &words)
{
    if (words.size() < 2)
        return verbs();
    if (words.size() > 2)
        return {};
    if (words.first() == StageWords::Act)
        return eventWords() + faultWords();
    return words.first() == StageWords::Look ? StageWords::Views : QStringList();
}

HostdExitCode StageCommand::run(const HostdOptions &options, QString *error)
{
    const QStringList &words = options.words;
    if (words.first() == Wait && words.size() == 1)
        return wait(options, error);
    if (words.first() == Wait) {
        *error = QStringLiteral("unexpected argument \"%1\"").arg(words.at(1));
        return HostdExitCode::BadArguments;
    }
    const bool pipes = words == QStringList {StageWords::Act, QStringLiteral("-")};
    const QByteArray request = pipes ? QByteArray() : StageWords::request(words, error);
    if (!error->isEmpty())
        return HostdExitCode::BadArguments;
    StageCall call;
    if (!call.connect(error))
        return HostdExitCode::NotRunning;
    return pipes ? pipe(options, &call, error) : ask(options, &call, request, error);
}

} // namespace morvek
