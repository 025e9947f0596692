// SPDX-License-Identifier: Apache-2.0
#include "screentest.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtGui/QStyleHints>

namespace {

QStringList warnings;
QtMessageHandler former = nullptr;

void note(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtDebugMsg && type != QtInfoMsg)
        warnings += message;
    former(type, context, message);
}

bool isShown(const QQuickItem *item)
{
    return item->isVisible() && item->width() > 0 && item->height() > 0;
}

bool isTarget(const QQuickItem *item)
{
    return item->inherits("QQuickAbstractButton") || item->inherits("QQuickTextField");
}

} // namespace

Screen::Screen()
    : Screen(Options())
{
}

Screen::Screen(const Options &options)
{
    if (!former) // after the test has begun, which has a handler of its own
        former = qInstallMessageHandler(note);
    QGuiApplication::setLayoutDirection(options.direction);
    if (options.language != QLatin1String("en")) {
        m_words.load(QStringLiteral(":/settings/settings_") + options.language);
        QCoreApplication::installTranslator(&m_words);
        m_kitWords.load(QStringLiteral(MORVEK_KIT_TRANSLATIONS "/morvek-network-kit_") + options.language);
        QCoreApplication::installTranslator(&m_kitWords);
    }
    m_engine.addImportPath(QStringLiteral(MORVEK_QML_FOLDER));
    m_engine.setInitialProperties({{QStringLiteral("screenSize"), options.size},
                                   {QStringLiteral("night"), options.night},
                                   {QStringLiteral("moving"), options.moving},
                                   {QStringLiteral("scenario"), options.scenario}});
    m_engine.load(QStringLiteral("qrc:/settings/Main.qml"));
    if (m_engine.rootObjects().isEmpty())
        return;
    m_window = qobject_cast<QQuickWindow *>(m_engine.rootObjects().constFirst());
    m_window->requestActivate();
    if (!QTest::qWaitForWindowActive(m_window))
        m_window = nullptr;
}

Screen::~Screen()
{
    QCoreApplication::removeTranslator(&m_words);
    QCoreApplication::removeTranslator(&m_kitWords);
}

void Screen::prepare()
{
    const auto unlessSet = [](const char *name, const char *value) {
        if (!qEnvironmentVariableIsSet(name))
            qputenv(name, value);
    };
    unlessSet("QT_QPA_PLATFORM", "offscreen");
    static const QTemporaryDir runtime; // or Qt warns
    unlessSet("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_FONT_DPI", "96");
    qputenv("QT_SCALE_FACTOR", "1");
    qunsetenv("QT_QPA_PLATFORMTHEME");
    QLocale::setDefault(QLocale::c());
}

void Screen::prepare(QGuiApplication *application)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setHintingPreference(QFont::PreferNoHinting);
    QGuiApplication::setFont(font);
    application->styleHints()->setCursorFlashTime(0); // a cursor that stands still
    // The offscreen platform never frees it: that would be taken for a leak.
    static const QScreen *const kept = QGuiApplication::primaryScreen();
    Q_UNUSED(kept)
}

QStringList Screen::takeWarnings()
{
    return std::exchange(warnings, {});
}

QVector<QQuickItem *> Screen::items() const
{
    QVector<QQuickItem *> all {m_window->contentItem()};
    for (int i = 0; i < all.size(); ++i) {
        for (QQuickItem *child : all.at(i)->childItems()) {
            if (child->isVisible())
                all += child;
        }
    }
    return all;
}

QQuickItem *Screen::item(const QString &name) const
{
    for (QQuickItem *item : items()) {
        if (item->objectName() == name && isShown(item))
            return item;
    }
    return nullptr;
}

bool Screen::waitFor(const char *name) const
{
    return QTest::qWaitFor([=] { return item(name) != nullptr; });
}

bool Screen::waitForEnd(const char *name) const
{
    return QTest::qWaitFor([=] { return item(name) == nullptr; });
}

QString Screen::text(const char *name) const
{
    return property(name, "text").toString().remove(QChar(0x2068)).remove(QChar(0x2069));
}

bool Screen::waitForText(const char *name, const QString &text)
{
    if (QTest::qWaitFor([&] { return this->text(name) == text; }))
        return true;
    qWarning("%s says \"%s\"", name, qPrintable(this->text(name)));
    return false;
}

QVariant Screen::property(const char *name, const char *property) const
{
    const QQuickItem *found = item(name);
    return found ? found->property(property) : QVariant();
}

QVector<QQuickItem *> Screen::targets() const
{
    QVector<QQuickItem *> all;
    for (QQuickItem *item : items()) {
        if (isTarget(item) && isShown(item))
            all += item;
    }
    const auto within = [](const QQuickItem *item, const char *kind) {
        for (const QQuickItem *outer = item; outer; outer = outer->parentItem()) {
            if (outer->inherits(kind) || QByteArray(outer->metaObject()->className()).startsWith(kind))
                return true;
        }
        return false;
    };
    const bool dialog =
        std::any_of(all.cbegin(), all.cend(), [&](const QQuickItem *item) { return within(item, "QQuickPopupItem"); });
    QVector<QQuickItem *> reachable;
    std::copy_if(all.cbegin(), all.cend(), std::back_inserter(reachable), [&](const QQuickItem *item) {
        return within(item, "QQuickPopupItem") == dialog && !within(item, "StagePanel");
    });
    return reachable;
}

QRectF Screen::placeOf(const QQuickItem *item) const
{
    return item->mapRectToScene(item->boundingRect());
}

QString Screen::focused() const
{
    QStringList names;
    for (const QQuickItem *item = m_window->activeFocusItem(); item; item = item->parentItem()) {
        if (!item->objectName().isEmpty())
            names.prepend(item->objectName());
    }
    return names.join(QLatin1Char('/'));
}

QPoint Screen::spot(const char *name)
{
    if (!waitFor(name))
        return {};
    picture(); // everything has found its place
    QQuickItem *target = item(name);
    // What a driver would have to scroll for is scrolled to.
    for (QQuickItem *outer = target->parentItem(); outer; outer = outer->parentItem()) {
        if (!outer->inherits("QQuickFlickable"))
            continue;
        auto *inner = outer->property("contentItem").value<QQuickItem *>();
        const QRectF place = target->mapRectToItem(inner, target->boundingRect());
        const qreal top = outer->property("contentY").toReal();
        if (place.bottom() > top + outer->height() || place.top() < top)
            outer->setProperty("contentY", qMax(0.0, place.bottom() + 24 - outer->height()));
    }
    picture();
    return placeOf(target).center().toPoint();
}

bool Screen::open(int number)
{
    return click(qPrintable(QStringLiteral("place%1").arg(number)));
}

bool Screen::turnTo(const char *name)
{
    for (int i = 0; i < 200; ++i) {
        if (m_window->activeFocusItem() && m_window->activeFocusItem() == item(name))
            return true;
        key(Qt::Key_Right);
        picture();
    }
    return false;
}

bool Screen::click(const char *name)
{
    const QPoint place = spot(name);
    if (place.isNull())
        return false;
    QTest::mouseClick(m_window, Qt::LeftButton, Qt::NoModifier, place);
    return true;
}

bool Screen::touch(const char *name)
{
    static QTouchDevice *const device = QTest::createTouchDevice();
    const QPoint place = spot(name);
    if (place.isNull())
        return false;
    QTest::touchEvent(m_window, device).press(0, place, m_window);
    QTest::touchEvent(m_window, device).release(0, place, m_window);
    return true;
}

void Screen::key(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(m_window, key, modifiers);
}

void Screen::type(const QString &text)
{
    for (const QChar &letter : text)
        QTest::keyClick(m_window, letter.toLatin1());
}

QImage Screen::picture() const
{
    QSignalSpy drawn(m_window, &QQuickWindow::frameSwapped);
    m_window->update();
    if (!drawn.wait())
        return {};
    return m_window->screen()->grabWindow(m_window->winId()).toImage().convertToFormat(QImage::Format_RGB32);
}
