// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PUBLISHER_H
#define MORVEK_PUBLISHER_H

#include "zopobject.h"

#include <memory>

/*! The least networking daemon: interfaces, a status, and a control object that accepts every request at once. */
class Publisher : public QObject
{
    Q_OBJECT

public:
    /*! Publishes \a count interfaces, none of them connected; the first one is update()d. */
    explicit Publisher(int count);

    /*! Updates three attributes of the first interface. */
    void update();

private:
    void reply(const morvek::ZopChangeset &request);

    std::unique_ptr<morvek::ZopObject> m_first;
    std::unique_ptr<morvek::ZopObject> m_control;
    int m_updates = 0;
};

/*! Publishes, says "ready", and updates once for each line of standard input. */
int runPublisher(int count);

#endif
