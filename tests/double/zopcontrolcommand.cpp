// SPDX-License-Identifier: Apache-2.0
#include "zopcontrolcommand.h"

#include "zopregistry.h"

#include <QtCore/QMetaMethod>

namespace morvek {

class ZopControlCommand::Private : public CommandState
{
};

ZopControlCommand::ZopControlCommand(ZopObject *controlObject, QObject *parent)
    : QObject(parent),
      d(new Private)
{
    ZopRegistry &registry = ZopRegistry::instance();
    d->q = this;
    d->path = controlObject ? controlObject->path() : QStringLiteral("none");
    registry.commandStates.append(d.get());
    registry.journal.append(QStringLiteral("command %1 parent %2").arg(d->path, classText(parent)));
}

ZopControlCommand::~ZopControlCommand()
{
    ZopRegistry::instance().journal.append(QLatin1String("delete command ") + d->id);
    ZopRegistry::instance().commandStates.removeOne(d.get());
}

void ZopControlCommand::setMessage(const QString &message)
{
    d->message = message;
}

QString ZopControlCommand::message() const
{
    ++ZopRegistry::instance().askedTexts;
    return d->message;
}

void ZopControlCommand::setDat(const ZopVariant &dat)
{
    if (!dat.isValid())
        qWarning("An invalid payload: another platform may take it for one");
    d->dat = dat;
}

void ZopControlCommand::start()
{
    ZopRegistry &registry = ZopRegistry::instance();
    const QMap<QString, bool> connected {
        {QStringLiteral("finished"), isSignalConnected(QMetaMethod::fromSignal(&ZopControlCommand::finished))},
    };
    d->id = registry.nextId.isEmpty() ? QString::number(registry.commands.size() + 1) : registry.nextId;
    registry.nextId.clear();
    registry.commands.append({this, d->path, d->message, d->dat});
    registry.journal.append(QStringLiteral("start %1 %2 %3").arg(d->message, d->id, connectedText(connected)));
    if (registry.startHook)
        registry.startHook(d->message);
}

QString ZopControlCommand::id() const
{
    return d->id;
}

bool ZopControlCommand::hasError() const
{
    return d->failed;
}

int ZopControlCommand::errorCode() const
{
    return d->errorCode;
}

QString ZopControlCommand::errorString() const
{
    ++ZopRegistry::instance().askedTexts;
    return d->errorString;
}

ZopVariant ZopControlCommand::datResponse() const
{
    return d->reply;
}

} // namespace morvek
