// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPCONTROLCOMMAND_H
#define MORVEK_ZOPCONTROLCOMMAND_H

#include "zopvariant.h"

#include <QtCore/QObject>

#include <memory>

namespace morvek {

class ZopObject;

/*!
 * One request on a control object and its reply.
 *
 * finished() comes exactly once and from the event loop, never inside start(): with the daemon's reply, or with
 * an error when the request could not be written, when the daemon died or when the control object was deleted.
 *
 * The default argument is for daemons, tools and tests: the library does without.
 */
class MORVEK_PLATFORM_EXPORT ZopControlCommand : public QObject
{
    Q_OBJECT

public:
    explicit ZopControlCommand(ZopObject *controlObject, QObject *parent = nullptr);
    ~ZopControlCommand() override;

    /*! The name of the request, sent as "msg". */
    void setMessage(const QString &message);
    QString message() const;
    /*! The payload of the request, sent as "dat"; none when it is not valid. */
    void setDat(const ZopVariant &dat);

    /*! Writes the request. A second call does nothing. */
    void start();
    /*!
     * The identifier of the started request, a decimal number that no other unfinished command of the control
     * object has; start() sets it even when the request cannot be written. Empty before.
     */
    QString id() const;

    /*!
     * True when the request failed or its reply is a refusal; errorCode() is then the reply's "err", or -1 when that
     * is no number.
     */
    bool hasError() const;
    int errorCode() const;
    QString errorString() const;
    /*! The payload of the reply. */
    ZopVariant datResponse() const;

Q_SIGNALS:
    void finished(morvek::ZopControlCommand *command);

private:
    Q_DISABLE_COPY(ZopControlCommand)
    friend class ZopObject;
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
