// SPDX-License-Identifier: Apache-2.0
#ifndef LISTENER_H
#define LISTENER_H

#include "servicepointer.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <vector>

/*! An application that has all services, and notes what they tell, with everything that it can ask then. */
class Listener : public QObject
{
public:
    Listener();
    ~Listener() override;

    bool isReady() const;
    /*! Asks for a scan; its end is noted. */
    void scan();

    /*! Whether the MTU of an interface has become 1999. */
    bool hasHeardTheEnd() const { return !notes.isEmpty() && notes.constLast().contains(QStringLiteral(" 1999 ")); }

    /*! A line for each signal, in their order. */
    QStringList notes;

private:
    void note(const QString &text);

    NetworkInterfaceServicePointer m_interfaces;
    WifiServicePointer m_wifi;
    HotSpotServicePointer m_hotspot;
    std::vector<std::unique_ptr<QObject>> m_operations;
};

#endif
