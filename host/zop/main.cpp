// SPDX-License-Identifier: Apache-2.0
#include "zopcommands.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

namespace {

QString helpText()
{
    return QStringLiteral("Usage: morvek-zop COMMAND\n"
                          "\n"
                          "Looks at the objects below ZOP_ROOT, and changes them, by hand.\n"
                          "\n"
                          "Commands:\n")
        + morvek::helpLines(zopCommandEntries())
        + QStringLiteral("\n"
                         "A CHANGE is NAME=TEXT, NAME:=JSON, or -NAME to remove an attribute.\n"
                         "\n"
                         "Options:\n")
        + morvek::helpLines({{QStringLiteral("-h, --help"), QStringLiteral("this text")},
                             {QStringLiteral("--version"), QStringLiteral("the version")}})
        + QStringLiteral("\n"
                         "Example:\n"
                         "  morvek-zop set /zop/services/networking/all/interfaces/eth0 connected=false "
                         "'ip_addresses:=[]'\n"
                         "\n"
                         "Exit codes:\n")
        + morvek::helpLines({{QString::number(Done), QStringLiteral("done")},
                             {QString::number(Failed), QStringLiteral("failed")},
                             {QString::number(WrongUsage), QStringLiteral("the command line makes no sense")}});
}

/*! The option that stands alone, or behind a command in the place of a path, which never looks like that. */
QString optionIn(const QStringList &words)
{
    if (words.size() < 2)
        return words.value(0);
    return words.first().startsWith(QLatin1Char('-')) ? QString() : words.at(1);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    const QString option = optionIn(words);
    QTextStream out(stdout);
    out.setCodec("UTF-8");
    if (words.value(0) == QLatin1String("complete")) {
        const QStringList typed = words.mid(words.value(1) == QLatin1String("--") ? 2 : 1);
        out << morvek::completionLines(zopCandidates(typed), typed).join(QLatin1Char('\n')) << '\n';
    } else if (option == QLatin1String("--help") || option == QLatin1String("-h")) {
        out << helpText();
    } else if (option == QLatin1String("--version")) {
        out << "morvek-zop " MORVEK_VERSION "\n";
    } else {
        return runZopCommand(words);
    }
    return Done;
}
