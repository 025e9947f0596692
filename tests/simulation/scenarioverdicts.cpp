// SPDX-License-Identifier: Apache-2.0
// Reads scenarios from standard input, each on a line, and writes a line for each: what is wrong with it, or nothing.
#include "scenarioreader.h"

#include <cstdio>
#include <iostream>
#include <string>

int main()
{
    std::string line;
    while (std::getline(std::cin, line)) {
        morvek::Scenario scenario;
        QString error;
        morvek::readScenario(QByteArray::fromStdString(line), &scenario, &error);
        std::puts(error.simplified().toUtf8().constData());
    }
    return 0;
}
