// SPDX-License-Identifier: Apache-2.0
#ifndef LISTENER_H
#define LISTENER_H

#include "servicepointer.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <vector>

/*!
 * An application that has all services, and notes what they tell, with everything that it can ask then. Of the
 * interface "veth0" it notes nothing: its MTU says how far the story is.
 */
class Listener : public QObject
{
public:
    Listener();
    ~Listener() override;

    bool isReady() const;
    /*! Asks for a scan; its end is noted. */
    void scan();

    /*! Waits until it has heard of the mark with that \a number, and whatever comes before it. */
    bool waitForMark(int number) const;

    /*! A line for each signal, in their order. */
    QStringList notes;

private:
    void note(const QString &text);

    int m_mark = 0;
    NetworkInterfaceServicePointer m_interfaces;
    WifiServicePointer m_wifi;
    HotSpotServicePointer m_hotspot;
    std::vector<std::unique_ptr<QObject>> m_operations;
};

#endif
