// SPDX-License-Identifier: Apache-2.0
#include "managerrefusal.h"

#include <algorithm>
#include <memory>

namespace morvek {

namespace {

bool isAny(const GError *error, GQuark domain, std::initializer_list<int> codes)
{
    return error->domain == domain && std::find(codes.begin(), codes.end(), error->code) != codes.end();
}

/*! Which the library words differently, as it learns of it. */
bool isGone(const GError *error)
{
    return isAny(error, G_DBUS_ERROR,
                 {G_DBUS_ERROR_SERVICE_UNKNOWN, G_DBUS_ERROR_NAME_HAS_NO_OWNER, G_DBUS_ERROR_NO_REPLY,
                  G_DBUS_ERROR_DISCONNECTED})
        || isAny(error, G_IO_ERROR, {G_IO_ERROR_CLOSED})
        || isAny(error, NM_CLIENT_ERROR, {NM_CLIENT_ERROR_MANAGER_NOT_RUNNING});
}

Refusal::Code codeOf(const GError *error)
{
    if (isAny(error, G_DBUS_ERROR, {G_DBUS_ERROR_TIMEOUT, G_DBUS_ERROR_TIMED_OUT})
        || isAny(error, G_IO_ERROR, {G_IO_ERROR_TIMED_OUT}))
        return Refusal::ManagerGone;
    if (isAny(error, G_DBUS_ERROR, {G_DBUS_ERROR_ACCESS_DENIED, G_DBUS_ERROR_AUTH_FAILED})
        || isAny(error, NM_MANAGER_ERROR, {NM_MANAGER_ERROR_PERMISSION_DENIED})
        || isAny(error, NM_SETTINGS_ERROR, {NM_SETTINGS_ERROR_PERMISSION_DENIED}))
        return Refusal::NotPermitted;
    if (isAny(error, NM_MANAGER_ERROR, {NM_MANAGER_ERROR_UNKNOWN_DEVICE}))
        return Refusal::NotFound;
    if (isAny(error, NM_CONNECTION_ERROR,
              {NM_CONNECTION_ERROR_INVALID_PROPERTY, NM_CONNECTION_ERROR_MISSING_PROPERTY,
               NM_CONNECTION_ERROR_INVALID_SETTING, NM_CONNECTION_ERROR_MISSING_SETTING}))
        return Refusal::BadValue;
    return Refusal::ManagerRefused;
}

} // namespace

Refusal managerGone()
{
    return {Refusal::ManagerGone, QStringLiteral("the network manager does not run")};
}

Refusal refusalOf(const GError *error)
{
    // It may also have carried out what it was asked for, and have gone with that before it could be seen.
    if (isGone(error) || isAny(error, NM_CLIENT_ERROR, {NM_CLIENT_ERROR_OBJECT_CREATION_FAILED}))
        return managerGone();
    const std::unique_ptr<GError, decltype(&g_error_free)> copy(g_error_copy(error), g_error_free);
    g_dbus_error_strip_remote_error(copy.get());
    return {codeOf(error), QString::fromUtf8(copy->message)};
}

} // namespace morvek
