// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_ZOPCONTROLCOMMAND_H
#define LEAST_ZOPCONTROLCOMMAND_H

#include <QtCore/QObject>

namespace morvek {

class ZopObject;
class ZopVariant;

class ZopControlCommand : public QObject
{
    Q_OBJECT

public:
    ZopControlCommand(ZopObject *controlObject, QObject *parent);

    void setMessage(const QString &message);
    void setDat(const ZopVariant &dat);
    void start();
    QString id() const;
    bool hasError() const;
    int errorCode() const;
    QString errorString() const;
    QString message() const;
    ZopVariant datResponse() const;

Q_SIGNALS:
    void finished(ZopControlCommand *command);
};

} // namespace morvek

#endif
