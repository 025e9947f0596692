// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPACCESS_P_H
#define MORVEK_ZOPACCESS_P_H

#include "zopcontrolcommand.h"
#include "zopobject.h"
#include "zopvariant.h"

#include <memory>

namespace morvek {

// What the providers do alike with the objects of their daemons.

// Modes in which objects are opened.
constexpr auto ReadOnly = ZopObject::PublicationMode(1);
constexpr auto ReadWrite = ZopObject::PublicationMode(2);

/*! Sets \a object to null and lets the event loop delete it: it may be telling something just now. */
template<typename Object>
void discardLater(Object *&object)
{
    if (object)
        object->deleteLater();
    object = nullptr;
}

/*!
 * Sends a request to the daemon of \a controlObject; \a finished of \a provider hears of the reply. The command, once
 * it is started, lives as long as the provider.
 */
template<typename Provider>
ZopControlCommand *startCommand(ZopObject *controlObject, const QString &message, const ZopVariant &dat,
                                Provider *provider, void (Provider::*finished)(ZopControlCommand *))
{
    auto command = std::make_unique<ZopControlCommand>(controlObject, provider);
    QObject::connect(command.get(), &ZopControlCommand::finished, provider, finished);
    command->setMessage(message);
    if (dat.isValid())
        command->setDat(dat);
    command->start();
    return command.release();
}

} // namespace morvek

#endif
