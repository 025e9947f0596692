// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKPLUGIN_H
#define MORVEK_NETWORKPLUGIN_H

#include <QtQml/QQmlExtensionPlugin>

namespace morvek {

/*! The QML module Morvek.Network. */
class NetworkPlugin : public QQmlExtensionPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QQmlExtensionInterface_iid)

public:
    explicit NetworkPlugin(QObject *parent = nullptr)
        : QQmlExtensionPlugin(parent)
    {
    }

    void registerTypes(const char *uri) override;
};

} // namespace morvek

#endif
