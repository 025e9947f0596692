// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_KERNELBELL_H
#define MORVEK_HOSTD_KERNELBELL_H

#include <QtCore/QObject>

namespace morvek {

/*!
 * Rings when the kernel has changed an interface, an address or a route. What has changed is not read from the
 * notifications, which can be lost: whoever hears the bell reads everything again.
 */
class KernelBell : public QObject
{
    Q_OBJECT

public:
    explicit KernelBell(QObject *parent = nullptr);
    ~KernelBell() override;

    /*! From now on every change rings. False when the kernel refuses. */
    bool hang(QString *error);

Q_SIGNALS:
    void rang();

private:
    Q_DISABLE_COPY(KernelBell)
    void drain();

    int m_socket = -1;
};

} // namespace morvek

#endif
