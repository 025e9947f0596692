// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOTSPOTSTORE_H
#define MORVEK_HOSTD_HOTSPOTSTORE_H

#include "privatefile.h"

#include <QtCore/QJsonObject>

namespace morvek {

/*! The hotspot's profile in a hidden file of the root, which nobody but this user can read once it was loaded. */
class HotspotStore
{
public:
    void setRoot(const QString &root);
    QString file() const;

    /*! The stored profile; empty when there is none, or none that can be used: then \a error says why. */
    QJsonObject load(QString *error) const;
    /*! Stores \a profile whole or, when that fails, leaves what is stored. */
    bool save(const QJsonObject &profile, QString *error) const;
    /*! Removes what is stored, and what a run that died has left of a newer one. */
    bool forget(QString *error) const;

private:
    PrivateFile m_file;
};

} // namespace morvek

#endif
