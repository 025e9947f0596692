// SPDX-License-Identifier: Apache-2.0
#include "testkitplugin.h"

#include "testunit.h"

#include <QtQml/qqml.h>

namespace morvek {

void TestKitPlugin::registerTypes(const char *uri)
{
    qRegisterMetaType<TestRequest>();
    qmlRegisterType<TestUnit>(uri, 1, 0, "TestUnit");
}

} // namespace morvek
