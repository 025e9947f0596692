// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPOBJECT_P_H
#define MORVEK_ZOPOBJECT_P_H

#include "zopbackend.h"
#include "zopobject.h"

#include <memory>

namespace morvek {

class ControlClient;
class ZopPath;

class Q_DECL_HIDDEN ZopObject::Private
{
public:
    Private(ZopObject *object, const QString &objectPath, PublicationMode publicationMode);

    void open(bool flag);
    void tell(const ZopChangeset &changes) const;
    bool isHeard() const;
    void wakeUp() const;

    ZopObject *q;
    QString path;
    PublicationMode mode;
    QString error;
    std::unique_ptr<ZopBackend> backend; // null when the object could not be opened
    ControlClient *client = nullptr;     // the backend, when it is one and may be written to

private:
    std::unique_ptr<ZopBackend> makeBackend(const ZopPath &target, bool flag);
    ZopBackend::Tell teller();
    bool start(std::unique_ptr<ZopBackend> made);
};

} // namespace morvek

#endif
