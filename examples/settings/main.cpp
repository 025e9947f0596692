// SPDX-License-Identifier: Apache-2.0
#include <QtCore/QCommandLineParser>
#include <QtCore/QTextStream>
#include <QtCore/QTranslator>
#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>

namespace {

/*! "800x480"; not valid when it is something else. */
QSize sizeOf(const QString &text)
{
    const QStringList sides = text.split(QLatin1Char('x'));
    return sides.size() == 2 ? QSize(sides.first().toInt(), sides.last().toInt()) : QSize();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    const QGuiApplication application(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The settings of a car's networks, Wi-Fi and hotspot."));
    parser.addHelpOption();
    const QCommandLineOption night(QStringLiteral("night"), QStringLiteral("Colours for the night."));
    const QCommandLineOption moving(QStringLiteral("moving"), QStringLiteral("The car moves: nothing can be typed."));
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("Of the screen: 800x480, 1280x720, 720x1280."),
                                  QStringLiteral("WIDTHxHEIGHT"), QStringLiteral("1280x720"));
    const QCommandLineOption stage(QStringLiteral("stage"),
                                   QStringLiteral("Plays a unit, with a panel beside the screen that acts on it."),
                                   QStringLiteral("SCENARIO"));
    parser.addOptions({night, moving, size, stage});
    parser.process(application);
    const QSize screen = sizeOf(parser.value(size));
    if (screen.isEmpty()) {
        QTextStream(stderr) << "settings-example: " << parser.value(size) << " is no size\n";
        return 2;
    }

    QTranslator words;
    if (words.load(QLocale(), QStringLiteral("settings"), QStringLiteral("_"), QStringLiteral(":/settings")))
        QCoreApplication::installTranslator(&words);
    QTranslator wordsOfKit;
    if (wordsOfKit.load(QLocale(), QStringLiteral("morvek-network-kit"), QStringLiteral("_"),
                        QStringLiteral(KIT_TRANSLATIONS)))
        QCoreApplication::installTranslator(&wordsOfKit);

    QQmlApplicationEngine engine;
    engine.setInitialProperties({{QStringLiteral("night"), parser.isSet(night)},
                                 {QStringLiteral("moving"), parser.isSet(moving)},
                                 {QStringLiteral("screenSize"), screen},
                                 {QStringLiteral("scenario"), parser.value(stage)}});
    engine.load(QStringLiteral("qrc:/settings/Main.qml"));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
