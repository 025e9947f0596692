// SPDX-License-Identifier: Apache-2.0
#include <QtCore/QString>
#include <QtNetwork/QHostAddress>

// A program that links what the library rests on, and does nothing.
int main(int argc, char *[])
{
    if (argc > 1)
        return QHostAddress(QString::number(argc)).isNull() ? 0 : 1;
    return 0;
}
