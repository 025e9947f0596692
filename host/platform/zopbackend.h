// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPBACKEND_H
#define MORVEK_ZOPBACKEND_H

#include "zopchangeset.h"

#include <functional>

namespace morvek {

/*! What a ZopObject stands on: the file of a state object, or either end of a control object. */
class ZopBackend
{
public:
    /*! Tells an update to whoever listens to the object. Afterwards the backend may be gone. */
    using Tell = std::function<void(const ZopChangeset &changes)>;

    explicit ZopBackend(Tell tell)
        : m_tell(std::move(tell))
    {
    }
    virtual ~ZopBackend() = default;

    virtual bool start(QString *error) = 0;
    virtual bool write(const ZopChangeset &changes, QString *error) = 0;
    /*! For whoever publishes the object: whether its path still has it; a control object takes it back. */
    virtual bool check(QString *error) = 0;

    /*! Somebody begins to listen to the object. */
    virtual void wakeUp() { }
    /*! Brings values() up to what would have been received by now if somebody listened. */
    virtual void catchUp() { }
    /*! The attributes as they have been received. Of what passes through a control object nothing is kept. */
    const QMap<QString, ZopVariant> &values() const { return m_values; }
    /*!
     * Brings values() up to the present; what was not told yet will not be, except that the values of an object
     * that is there no more are told as removed. Afterwards the backend may be gone.
     */
    virtual void refresh() { }

protected:
    void tell(const ZopChangeset &changes) const
    {
        const Tell kept = m_tell; // lives through the call, even when this does not
        kept(changes);
    }

    QMap<QString, ZopVariant> m_values;

private:
    Q_DISABLE_COPY(ZopBackend)
    Tell m_tell;
};

} // namespace morvek

#endif
