// SPDX-License-Identifier: Apache-2.0
#ifndef SERVICEDOUBLES_H
#define SERVICEDOUBLES_H

#include "asyncoperationbase.h"
#include "privatehalf.h"

#include <QtCore/QString>

#include <memory>
#include <type_traits>

/*! Never ready, whatever its provider says. */
template<typename Service>
class UnreadyService : public Service
{
public:
    bool ready() const override { return false; }
};

/*! Ready whatever its provider says, and even without one. */
template<typename Service>
class AlwaysReadyService : public Service
{
public:
    bool ready() const override { return true; }
};

/*! Gives \a service a new \a Provider in place of its own. */
template<typename Provider, typename Service>
Provider *replaceProvider(Service &service)
{
    auto owned = std::make_unique<Provider>();
    Provider *provider = owned.get();
    auto &half = privateHalf(service);
    half = std::make_unique<typename std::decay<decltype(*half)>::type>(&service, std::move(owned));
    return provider;
}

/*! How a new operation has ended without an event loop: "pending" or "CODE MESSAGE". Deletes it. */
template<typename Operation>
QString endOf(Operation *operation)
{
    const std::unique_ptr<Operation> owned(operation);
    if (!operation)
        return QStringLiteral("null");
    if (operation->parent() || !operation->results().isEmpty())
        return QStringLiteral("not new");
    if (!operation->hasError())
        return QStringLiteral("pending");
    return QStringLiteral("%1 %2").arg(operation->error().code()).arg(operation->error().message());
}

#endif
