// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTKITPLUGIN_H
#define MORVEK_TESTKITPLUGIN_H

#include <QtQml/QQmlExtensionPlugin>

namespace morvek {

/*! The QML module Morvek.TestKit. */
class TestKitPlugin : public QQmlExtensionPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QQmlExtensionInterface_iid)

public:
    explicit TestKitPlugin(QObject *parent = nullptr)
        : QQmlExtensionPlugin(parent)
    {
    }

    void registerTypes(const char *uri) override;
};

} // namespace morvek

#endif
