// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_MANAGERCLIENT_H
#define MORVEK_HOSTD_MANAGERCLIENT_H

#include "gobject.h"
#include "refusal.h"

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QTimer>
#include <QtCore/QVector>

#include <map>

// Nobody but the manager's library knows what is in one: signals carry pointers to it.
Q_DECLARE_OPAQUE_POINTER(NMDevice *)

namespace morvek {

/*!
 * The network manager of this machine and what it knows, kept up to date from the event loop, also when it ends and
 * comes back.
 */
class ManagerClient : public QObject
{
    Q_OBJECT

public:
    /*! Shows the interfaces of these names, or, when there are none, all. */
    explicit ManagerClient(const QStringList &only, QObject *parent = nullptr);
    ~ManagerClient() override;

    /*! Finds the manager; false, with the reason, when there is none that can be used. */
    bool start(QString *error);

    NMClient *get() const { return m_client.get(); }
    bool isRunning() const;

    /*! Those that are shown: of kinds that applications know, with names that objects can have. */
    QVector<NMDevice *> devices() const;
    /*! The one of this name that is shown, or null. */
    NMDevice *device(const QString &interface) const;
    /*! Whether one that is shown has this name, or has it while it is not connected. */
    bool knows(const QString &interface) const;
    /*! The first radio that is shown, or null. */
    NMDeviceWifi *radio() const;

    /*! From now on the interfaces of these names are not to be touched, as they carry the user's remote session. */
    void protect(const QStringList &interfaces) { m_protected = interfaces; }
    /*! Why \a device is not to be touched, or the one of this name. */
    Refusal refusesToTouch(NMDevice *device) const { return refusesToTouch(nameOf(device)); }
    Refusal refusesToTouch(const QString &interface) const;
    /*! Why what concerns all radios at once, their power, is not to be touched. */
    Refusal refusesToTouchRadios() const;

    /*! Called with null, or with why the manager has refused. */
    using ErrorCall = std::function<void(const GError *error)>;
    /*! Switches off and on again what \a device does by itself. Restoration does it for whoever wants it. */
    void setAutoconnect(NMDevice *device, bool autoconnect, QObject *context, const ErrorCall &answer);
    /*! Whether it does, once the manager has carried out all that it was asked for. */
    bool autoconnect(NMDevice *device) const;
    /*! Switches the power of all radios. */
    void setPower(bool on, QObject *context, const ErrorCall &answer);

    /*! The name that the kernel gives to what addresses of \a device are on. */
    static QString nameOf(NMDevice *device);
    /*! The profile of the active connection of \a device; empty when there is none. */
    static QString profileOf(NMDevice *device);
    /*! Has a connection that is added never stored, and, when it is \a bound, end with this process. */
    static GVariant *volatileOptions(bool bound);

Q_SIGNALS:
    /*! Something has become different: a device or its settings, addresses or connection. Once for what comes at once.
     */
    void changed();
    /*! The manager has ended or is back; after that comes changed(). */
    void runningChanged(bool running);
    /*! As the manager tells it, at once and with its reason. */
    void stateChanged(NMDevice *device, NMDeviceState now, NMDeviceState before, NMDeviceStateReason reason);

private:
    Q_DISABLE_COPY(ManagerClient)

    struct Watch
    {
        SignalConnection notify;
        SignalConnection state;
    };

    /*! What was asked for last, and how many answers are open. */
    struct Asked
    {
        bool value = false;
        int open = 0;
    };

    bool makeClient(QString *error);
    bool isMeant(NMDevice *device) const;
    bool isShown(NMDevice *device) const;
    void ring();
    void watchAll();
    void watch(std::map<GObject *, Watch> *kept, void *object);

    void set(const char *path, const char *interface, const char *property, bool value, QObject *context,
             const ErrorCall &answer);

    QStringList m_only;
    QStringList m_protected;
    GRef<NMClient> m_client;
    QHash<QByteArray, Asked> m_autoconnects; // by the paths of devices
    std::map<GObject *, Watch> m_watches;    // of all objects that changed() tells of
    SignalConnection m_notify;
    SignalConnection m_running;
    SignalConnection m_added;
    SignalConnection m_removed;
    QTimer m_bell;
};

} // namespace morvek

#endif
