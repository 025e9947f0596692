// SPDX-License-Identifier: Apache-2.0
#include "statusbar.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    StatusBar statusBar;
    if (!statusBar.ready()) {
        QTextStream(stdout) << "The networking daemon is not there." << Qt::endl;
        return 1;
    }
    return application.exec();
}
