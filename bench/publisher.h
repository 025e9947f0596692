// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PUBLISHER_H
#define MORVEK_PUBLISHER_H

#include "zopobject.h"

#include <QtCore/QStringList>

#include <memory>

class Pace;

/*! The least networking daemon: interfaces, a status, and a control object that accepts every request at once. */
class Publisher : public QObject
{
    Q_OBJECT

public:
    /*!
     * Publishes \a count interfaces, none of them connected; the first one is update()d, and is the parent of all
     * others when they are virtual. With \a pace, each request is answered when it may be.
     */
    explicit Publisher(int count, bool areVirtual = false, Pace *pace = nullptr);

    /*! Updates one attribute of the first interface, or three. */
    void update(int attributes = 3);

private:
    void reply(const morvek::ZopChangeset &request);

    std::unique_ptr<morvek::ZopObject> m_first;
    std::unique_ptr<morvek::ZopObject> m_control;
    int m_updates = 0;
    Pace *m_pace;
};

/*!
 * Publishes as many interfaces as the first of \a arguments says, "plain" or "virtual" ones, says "ready", and goes by
 * the lines of standard input: how many attributes to update. With a page, it keeps its pace there.
 */
int runPublisher(const QStringList &arguments);

#endif
