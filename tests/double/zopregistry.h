// SPDX-License-Identifier: Apache-2.0
#ifndef ZOPREGISTRY_H
#define ZOPREGISTRY_H

#include "zopdouble.h"

struct ObjectState
{
    morvek::ZopObject *q;
    QString path;
    QString error;
    QString writeError;
    ZopDouble::Values cache;
    bool cached = false;
};

struct WatcherState
{
    morvek::ZopDirWatcher *q;
    QString path;
    QString error;
};

struct CommandState
{
    morvek::ZopControlCommand *q;
    QString path;
    QString message;
    morvek::ZopVariant dat;
    QString id;
    bool failed = false;
    int errorCode = 0;
    QString errorString;
    morvek::ZopVariant reply;
};

/*! What the classes of the double share. */
struct ZopRegistry
{
    static ZopRegistry &instance();

    QMap<QString, ZopDouble::Values> world;
    QMap<QString, QString> refusals;
    QMap<QString, QString> writeRefusals;
    QList<ObjectState *> objects;
    QList<WatcherState *> watchers;
    QList<CommandState *> commandStates;
    QList<ZopDouble::Command> commands;
    std::function<void(const QString &message)> startHook;
    QList<ZopDouble::Write> writes;
    std::function<void(const morvek::ZopChangeset &changes)> writeHook;
    QString nextId;
    QStringList journal;
    int askedTexts = 0;
};

/*! Tells one object of one update. */
void tellObject(const QPointer<morvek::ZopObject> &object, const morvek::ZopChangeset &changes);

QString classText(const QObject *parent);
QString boolText(bool value);
/*! "connected" and the names in \a connected that are true. */
QString connectedText(const QMap<QString, bool> &connected);

#endif
