// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_OBJECTPUBLISHER_H
#define MORVEK_HOSTD_OBJECTPUBLISHER_H

#include "attributes.h"

#include <QtCore/QMap>

#include <map>
#include <memory>

namespace morvek {

class ZopObject;

/*! A daemon's state objects, by path. They stay when the publisher goes. */
class ObjectPublisher
{
public:
    ObjectPublisher();
    ~ObjectPublisher();

    /*! How an object of a former run is turned into the new one: everything is told anew, or what differs. */
    enum Takeover { TellAll, TellDifference };

    /*!
     * Creates the object complete, or turns one of a former run into it by one update, which tells what update() could
     * not write, too. What is there and cannot be read makes way.
     */
    bool publish(const QString &path, const Attributes &attributes, Takeover takeover, QString *error);
    /*! Writes one update to a published object. */
    bool update(const QString &path, const ZopChangeset &changes, QString *error);
    bool remove(const QString &path, QString *error);
    /*! Lets go of every object, as the death of a process does. */
    void abandon();

    /*! The names of the objects of \a directory, whoever created them. */
    static QStringList names(const QString &directory);

private:
    Q_DISABLE_COPY(ObjectPublisher)
    std::map<QString, std::unique_ptr<ZopObject>> m_objects;
    std::map<QString, Attributes> m_unwritten; // attributes that must still be told, by object
};

} // namespace morvek

#endif
