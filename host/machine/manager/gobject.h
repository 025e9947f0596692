// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_GOBJECT_H
#define MORVEK_HOSTD_GOBJECT_H

#include <QtCore/QPointer>
#include <QtCore/QString>

// A keyword of Qt's is a member's name there.
#pragma push_macro("signals")
#undef signals
#include <gio/gio.h>
extern "C" { // which this one does not say
#include <nm-errors.h>
}
#include <NetworkManager.h>
#pragma pop_macro("signals")

#include <functional>
#include <memory>
#include <utility>

namespace morvek {

struct GObjectUnref
{
    void operator()(void *object) const { g_object_unref(object); }
};

/*! Holds a reference to one of GLib's objects. */
template<typename Object>
using GRef = std::unique_ptr<Object, GObjectUnref>;

/*! A reference of one's own to \a object, which is somebody else's. */
template<typename Object>
GRef<Object> refTo(Object *object)
{
    return GRef<Object>(object ? static_cast<Object *>(g_object_ref(object)) : nullptr);
}

struct GVariantUnref
{
    void operator()(GVariant *variant) const { g_variant_unref(variant); }
};

/*! Holds a reference to one of GLib's variants. */
using Variant = std::unique_ptr<GVariant, GVariantUnref>;

/*! Takes an error from a function of GLib's. */
class GErrorKeeper
{
public:
    GErrorKeeper() = default;
    ~GErrorKeeper() { g_clear_error(&m_error); }

    GError **operator&() { return &m_error; }
    explicit operator bool() const { return m_error != nullptr; }
    const GError *get() const { return m_error; }

private:
    Q_DISABLE_COPY(GErrorKeeper)
    GError *m_error = nullptr;
};

/*! Has a function called with the arguments of an object's signal, until this goes or the object does. */
class SignalConnection
{
public:
    SignalConnection() = default;

    /*! The signal's own arguments are \a Arguments, without the object and the data. */
    template<typename... Arguments, typename Function>
    static SignalConnection make(void *object, const char *signal, Function function)
    {
        using Call = std::function<void(Arguments...)>;
        const auto called = [](void *, Arguments... arguments, void *call) {
            const Call copy = *static_cast<Call *>(call); // it may end its own connection
            copy(arguments...);
        };
        const auto ended = [](void *call, GClosure *) { delete static_cast<Call *>(call); };
        const gulong id = g_signal_connect_data(
            object, signal, reinterpret_cast<GCallback>(static_cast<void (*)(void *, Arguments..., void *)>(called)),
            new Call(function), ended, GConnectFlags(0));
        return SignalConnection(G_OBJECT(object), id);
    }

    SignalConnection(SignalConnection &&other) noexcept { *this = std::move(other); }
    SignalConnection &operator=(SignalConnection &&other) noexcept
    {
        std::swap(m_object, other.m_object);
        std::swap(m_id, other.m_id);
        return *this;
    }
    ~SignalConnection()
    {
        if (m_object && g_signal_handler_is_connected(m_object.get(), m_id))
            g_signal_handler_disconnect(m_object.get(), m_id);
    }

private:
    Q_DISABLE_COPY(SignalConnection)
    SignalConnection(GObject *object, gulong id)
        : m_object(refTo(object)),
          m_id(id)
    {
    }

    GRef<GObject> m_object;
    gulong m_id = 0;
};

/*!
 * What GLib calls when an asynchronous call of its own has ended: pass ready() as its callback, and make() as the data
 * of that.
 */
class AsyncCall
{
public:
    using Function = std::function<void(GObject *source, GAsyncResult *result)>;

    /*! Has \a function called once, unless \a context is gone by then. */
    static void *make(QObject *context, Function function) { return new AsyncCall {context, std::move(function)}; }
    static void ready(GObject *source, GAsyncResult *result, void *data)
    {
        const std::unique_ptr<AsyncCall> call(static_cast<AsyncCall *>(data));
        if (call->m_context)
            call->m_function(source, result);
    }

private:
    AsyncCall(QObject *context, Function function)
        : m_context(context),
          m_function(std::move(function))
    {
    }

    QPointer<QObject> m_context;
    Function m_function;
};

} // namespace morvek

#endif
