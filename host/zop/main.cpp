// SPDX-License-Identifier: Apache-2.0
#include "zopcommands.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

namespace {

const char Usage[] = R"(Usage: morvek-zop COMMAND

Looks at the objects below ZOP_ROOT, and changes them, by hand.

  list [DIRECTORY]       the paths of all objects below DIRECTORY, or below /zop
  show PATH              the attributes of a state object, each with its encoding
  watch PATH             the same, and then each update as it comes, until interrupted
  set PATH CHANGE...     writes one update; an object that is not there is created
  remove PATH            removes a state object
  check PATH             what is wrong with a state object's file, and what is in it

A CHANGE is NAME=TEXT, NAME:=JSON, or -NAME to remove an attribute.

Example: morvek-zop set /zop/services/networking/all/interfaces/eth0 connected=false 'ip_addresses:=[]'

Exit codes: 0 done, 1 failed, 2 wrong usage.
)";

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words == QStringList(QStringLiteral("--help"))) {
        QTextStream(stdout) << Usage;
        return Done;
    }
    const ExitCode code = runZopCommand(words);
    if (code == WrongUsage)
        QTextStream(stderr) << Usage;
    return code;
}
