// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_SCREENTEST_H
#define MORVEK_TEST_SCREENTEST_H

#include <QtCore/QStringList>
#include <QtCore/QTranslator>
#include <QtCore/QVector>
#include <QtGui/QImage>
#include <QtQml/QQmlApplicationEngine>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>
#include <QtTest/QtTest>

/*!
 * The settings screen in a real window, which is used as a driver uses it. It looks the same everywhere: it is drawn by
 * software, in one font, with 96 dots per inch.
 */
class Screen
{
public:
    struct Options
    {
        QSize size = {1280, 720};
        bool night = false;
        bool moving = false;
        QString language = QStringLiteral("en");
        Qt::LayoutDirection direction = Qt::LeftToRight;
        QString scenario; //!< with a panel beside the screen, on a unit of its own
    };

    Screen();
    explicit Screen(const Options &options);
    ~Screen();

    /*! To be called before there is an application, and with it. */
    static void prepare();
    static void prepare(QGuiApplication *application);
    /*! What was warned of since the last call. */
    static QStringList takeWarnings();

    bool isThere() const { return m_window != nullptr; }
    QQuickWindow *window() const { return m_window; }
    /*! The settings without what is beside them. */
    QQuickItem *settings() const { return item("settings"); }

    /*! The visible one with the object name \a name; null when there is none. */
    QQuickItem *item(const QString &name) const;
    QQuickItem *item(const char *name) const { return item(QString::fromUtf8(name)); }
    /*! Waits until there is one, or none any more. */
    bool waitFor(const char *name) const;
    bool waitForEnd(const char *name) const;
    /*! A property of it; not valid when it is not there. */
    QVariant property(const char *name, const char *property) const;
    /*! What it says, without the signs that keep directions apart; empty when it is not there. */
    QString text(const char *name) const;
    /*! Waits until it says \a text. */
    bool waitForText(const char *name, const QString &text);
    bool waitForText(const char *name, const char *text) { return waitForText(name, QString::fromUtf8(text)); }
    /*! All visible items below the window, dialogs included. */
    QVector<QQuickItem *> items() const;
    /*! Those that can be touched: buttons and fields, except what is behind a dialog or only for a desk. */
    QVector<QQuickItem *> targets() const;
    QRectF placeOf(const QQuickItem *item) const;
    /*! The names of what has the focus and of what it stands in, for messages. */
    QString focused() const;

    /*! The page \a number. */
    bool open(int number);
    /*! Once it is there, scrolled into sight and stands still; false when that does not come to be. */
    bool click(const char *name);
    bool touch(const char *name);
    /*! Turns the knob until \a name has the focus. */
    bool turnTo(const char *name);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void type(const QString &text);

    /*! What the window shows when nothing is drawn any more. */
    QImage picture() const;

private:
    Q_DISABLE_COPY(Screen)
    /*! Where to put a finger for it; null when it is not to be had. */
    QPoint spot(const char *name);

    QTranslator m_words;
    QTranslator m_kitWords;
    QQmlApplicationEngine m_engine;
    QQuickWindow *m_window = nullptr;
};

/*! The main function of a test of the screen. */
#define MORVEK_SCREEN_TEST(CLASS)                                                                                      \
    int main(int argc, char *argv[])                                                                                   \
    {                                                                                                                  \
        Screen::prepare();                                                                                             \
        QGuiApplication application(argc, argv);                                                                       \
        Screen::prepare(&application);                                                                                 \
        CLASS test;                                                                                                    \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }

#endif
