// SPDX-License-Identifier: Apache-2.0
#include "zopcontrolcommand.h"

#include "controlclient.h"
#include "zopobject.h"
#include "zopobject_p.h"

#include <QtCore/QPointer>

namespace morvek {

class ZopControlCommand::Private
{
public:
    void start(ZopControlCommand *q);
    void readReply(const ZopChangeset &reply);
    void fail(ZopControlCommand *q, const QString &text);

    QPointer<ZopObject> controlObject;
    QString message;
    ZopVariant dat;
    int id = 0;
    bool started = false;
    bool hasError = false;
    int errorCode = 0;
    QString errorString;
    ZopVariant response;
};

ZopControlCommand::ZopControlCommand(ZopObject *controlObject, QObject *parent)
    : QObject(parent),
      d(new Private)
{
    d->controlObject = controlObject;
}

ZopControlCommand::~ZopControlCommand() = default;

void ZopControlCommand::setMessage(const QString &message)
{
    d->message = message;
}

QString ZopControlCommand::message() const
{
    return d->message;
}

void ZopControlCommand::setDat(const ZopVariant &dat)
{
    d->dat = dat;
}

void ZopControlCommand::start()
{
    if (d->started)
        return;
    d->started = true;
    d->start(this);
}

QString ZopControlCommand::id() const
{
    return d->id ? QString::number(d->id) : QString();
}

bool ZopControlCommand::hasError() const
{
    return d->hasError;
}

int ZopControlCommand::errorCode() const
{
    return d->errorCode;
}

QString ZopControlCommand::errorString() const
{
    return d->errorString;
}

ZopVariant ZopControlCommand::datResponse() const
{
    return d->response;
}

void ZopControlCommand::Private::start(ZopControlCommand *q)
{
    ZopChangeset request;
    request.assignments.insert(QStringLiteral("msg"), ZopVariant(message));
    if (dat.isValid())
        request.assignments.insert(QStringLiteral("dat"), dat);
    dat = ZopVariant(); // a finished command lives on, and a passkey should not

    const auto answer = [command = QPointer<ZopControlCommand>(q)](const ZopChangeset *reply) {
        if (!command)
            return;
        if (!reply) {
            command->d->fail(command, QStringLiteral("the daemon is gone"));
            return;
        }
        command->d->readReply(*reply);
        emit command->finished(command);
    };
    QString error = QStringLiteral("not a control object that was opened for writing");
    if (!controlObject || !controlObject->d->client || !controlObject->d->client->send(request, answer, &id, &error))
        fail(q, error);
}

void ZopControlCommand::Private::readReply(const ZopChangeset &reply)
{
    const QString err = reply.assignments.value(QStringLiteral("err")).toString();
    errorString = reply.assignments.value(QStringLiteral("errmsg")).toString();
    response = reply.assignments.value(QStringLiteral("dat"));
    hasError = !errorString.isEmpty() || (!err.isEmpty() && err != QLatin1String("0"));
    if (!hasError)
        return;
    errorCode = err.toInt();
    if (errorCode == 0)
        errorCode = -1;
}

void ZopControlCommand::Private::fail(ZopControlCommand *q, const QString &text)
{
    hasError = true;
    errorCode = -1;
    errorString = text;
    QMetaObject::invokeMethod(
        q, [q] { emit q->finished(q); }, Qt::QueuedConnection);
}

} // namespace morvek
