// SPDX-License-Identifier: Apache-2.0
#include "screentest.h"

#include <testunit.h>

#include <QtGui/QAccessible>

using namespace morvek;

Q_DECLARE_METATYPE(Qt::Key)

namespace {

const QVector<QSize> sizes {{800, 480}, {1280, 720}, {720, 1280}};
const QStringList languages {QStringLiteral("en"), QStringLiteral("de")};
/*! What is to be there before a page is looked at. */
const char *const last[] = {"interface_wlan0", "network_Café am Markt", "hotspotName"};

QString describe(const QQuickItem *item)
{
    return QStringLiteral("%1 \"%2\"").arg(item->objectName(), item->property("text").toString());
}

} // namespace

/*! Each page can be used with a finger and with a knob, read at a glance, and read out. */
class tst_ScreenReach : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void keysReachEverything_data();
    void keysReachEverything();
    void targetsAreLargeAndApart_data() { everyLook(); }
    void targetsAreLargeAndApart();
    void textsAreLargePlainAndWhole_data() { everyLook(); }
    void textsAreLargePlainAndWhole();
    void targetsHaveNamesForReaders_data() { everyLook(); }
    void targetsHaveNamesForReaders();
    void pagesAreMirrored();
    void theCarThatMovesLocksTyping();
    void aKeyboardIsGivenWayTo();
    void theNightHasNoLargeLightAreas();

private:
    static void everyLook();
    /*! The page \a number of \a screen, which has what it shows. */
    static bool open(Screen *screen, int number);

    std::unique_ptr<TestUnit> m_unit;
};

void tst_ScreenReach::init()
{
    m_unit = std::make_unique<TestUnit>();
    QVERIFY(m_unit->start());
}

void tst_ScreenReach::cleanup()
{
    m_unit.reset();
    QCOMPARE(Screen::takeWarnings(), QStringList());
}

void tst_ScreenReach::everyLook()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("language");
    QTest::addColumn<int>("page");
    for (const QSize size : sizes) {
        for (const QString &language : languages) {
            for (int page = 0; page < 3; ++page) {
                QTest::addRow("%dx%d %s page %d", size.width(), size.height(), qPrintable(language), page)
                    << size << language << page;
            }
        }
    }
}

bool tst_ScreenReach::open(Screen *screen, int number)
{
    return screen->isThere() && screen->click(qPrintable(QStringLiteral("place%1").arg(number)))
        && screen->waitFor(last[number]) && !screen->picture().isNull();
}

void tst_ScreenReach::keysReachEverything_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::LayoutDirection>("direction");
    for (int page = 0; page < 3; ++page) {
        QTest::addRow("tab, page %d", page) << page << Qt::Key_Tab << Qt::LeftToRight;
        QTest::addRow("backtab, page %d", page) << page << Qt::Key_Backtab << Qt::LeftToRight;
        QTest::addRow("right, page %d", page) << page << Qt::Key_Right << Qt::LeftToRight;
        QTest::addRow("left, page %d", page) << page << Qt::Key_Left << Qt::LeftToRight;
        QTest::addRow("down, page %d", page) << page << Qt::Key_Down << Qt::LeftToRight;
        QTest::addRow("up, page %d", page) << page << Qt::Key_Up << Qt::LeftToRight;
        QTest::addRow("right, mirrored, page %d", page) << page << Qt::Key_Right << Qt::RightToLeft;
    }
}

void tst_ScreenReach::keysReachEverything()
{
    QFETCH(const int, page);
    QFETCH(const Qt::Key, key);
    QFETCH(const Qt::LayoutDirection, direction);
    Screen::Options options;
    options.size = {800, 480};
    options.direction = direction;
    Screen screen(options);
    QVERIFY(open(&screen, page));

    QQuickItem *const first = screen.window()->activeFocusItem();
    QSet<QQuickItem *> reached {first};
    QCOMPARE(first, screen.item(qPrintable(QStringLiteral("place%1").arg(page))));
    QSet<QQuickItem *> wanted;
    for (int presses = 0; presses < 100; ++presses) {
        // A field that is full of letters has them to go through.
        for (int letters = 0; letters < 100; ++letters) {
            QQuickItem *const before = screen.window()->activeFocusItem();
            screen.key(key, key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
            if (screen.window()->activeFocusItem() != before)
                break;
        }
        screen.picture(); // everything has found its place
        QQuickItem *const focused = screen.window()->activeFocusItem();
        const QVector<QQuickItem *> targets = screen.targets();
        wanted += QSet<QQuickItem *>(targets.cbegin(), targets.cend());
        QVERIFY2(targets.contains(focused), qPrintable(screen.focused()));
        if (reached.contains(focused)) {
            QVERIFY2(focused == first, qPrintable(screen.focused()));
            break;
        }
        reached += focused;

        const QRectF place = screen.placeOf(focused);
        QVERIFY2(screen.placeOf(screen.settings()).contains(place),
                 qPrintable(screen.focused() + QStringLiteral(" %1 %2").arg(place.top()).arg(place.bottom())));
        bool ring = false;
        for (const QQuickItem *item : screen.items()) {
            if (QByteArray(item->metaObject()->className()).startsWith("FocusRing"))
                ring = ring || screen.placeOf(item).adjusted(-1, -1, 1, 1).contains(place);
        }
        QVERIFY2(ring, qPrintable(describe(focused)));
        for (const QQuickItem *outer = focused->parentItem(); outer; outer = outer->parentItem()) {
            if (outer->inherits("QQuickFlickable"))
                QVERIFY2(screen.placeOf(outer).contains(place), qPrintable(describe(focused)));
        }
    }
    for (QQuickItem *item : qAsConst(wanted))
        QVERIFY2(reached.contains(item), qPrintable(describe(item)));
}

void tst_ScreenReach::targetsAreLargeAndApart()
{
    QFETCH(const QSize, size);
    QFETCH(const QString, language);
    QFETCH(const int, page);
    Screen::Options options;
    options.size = size;
    options.language = language;
    Screen screen(options);
    QVERIFY(open(&screen, page));
    const QVector<QQuickItem *> targets = screen.targets();
    QVERIFY(targets.size() > 3);
    for (const QQuickItem *target : targets) {
        QVERIFY2(target->width() >= 76 && target->height() >= 76, qPrintable(describe(target)));
        for (const QQuickItem *other : targets) {
            const bool together = other == target;
            QVERIFY2(together || !screen.placeOf(target).intersects(screen.placeOf(other)),
                     qPrintable(describe(target) + describe(other)));
        }
    }
}

void tst_ScreenReach::textsAreLargePlainAndWhole()
{
    QFETCH(const QSize, size);
    QFETCH(const QString, language);
    QFETCH(const int, page);
    Screen::Options options;
    options.size = size;
    options.language = language;
    Screen screen(options);
    QVERIFY(open(&screen, page));
    int texts = 0;
    for (const QQuickItem *item : screen.items()) {
        if (!item->inherits("QQuickText") || item->property("text").toString().isEmpty())
            continue;
        ++texts;
        QCOMPARE(item->property("textFormat").toInt(), int(Qt::PlainText));
        const int pixels = item->property("font").value<QFont>().pixelSize();
        QVERIFY2(pixels == 32 || pixels == 24, qPrintable(describe(item)));
        QVERIFY2(!item->property("truncated").toBool(), qPrintable(describe(item)));
        QVERIFY2(item->property("contentWidth").toReal() <= item->width() + 1, qPrintable(describe(item)));
        QVERIFY2(item->property("text").toString().size() <= 120, qPrintable(describe(item)));
    }
    QVERIFY(texts > 5);
}

void tst_ScreenReach::targetsHaveNamesForReaders()
{
    QFETCH(const QSize, size);
    QFETCH(const QString, language);
    QFETCH(const int, page);
    Screen::Options options;
    options.size = size;
    options.language = language;
    Screen screen(options);
    QVERIFY(open(&screen, page));
    for (QQuickItem *target : screen.targets()) {
        QAccessibleInterface *const reader = QAccessible::queryAccessibleInterface(target);
        QVERIFY2(reader, qPrintable(describe(target)));
        QVERIFY2(reader->text(QAccessible::Name).size() > 1, qPrintable(describe(target)));
        QVERIFY2(reader->role() != QAccessible::NoRole, qPrintable(describe(target)));
    }
}

void tst_ScreenReach::pagesAreMirrored()
{
    Screen::Options options;
    options.direction = Qt::RightToLeft;
    Screen screen(options);
    QVERIFY(open(&screen, 1));
    QVERIFY(screen.placeOf(screen.item("place1")).left() > 1000);
    const QQuickItem *row = screen.item("network_Home");
    for (const QQuickItem *item : screen.items()) {
        if (item->inherits("QQuickText") && row->isAncestorOf(item)) {
            QCOMPARE(item->property("effectiveHorizontalAlignment").toInt(), int(Qt::AlignRight));
            QVERIFY(screen.placeOf(item).right() > screen.placeOf(row).center().x());
        }
    }
    QVERIFY(screen.click("network_Garage"));
    QVERIFY(screen.waitFor("passkeyInput"));
    QCOMPARE(screen.property("dialogName", "effectiveHorizontalAlignment").toInt(), int(Qt::AlignRight));
    QVERIFY(screen.placeOf(screen.item("dialogAction")).left() > screen.placeOf(screen.item("dialogClose")).left());
}

void tst_ScreenReach::theCarThatMovesLocksTyping()
{
    const QString lock = QStringLiteral("Typing is locked while the car moves.");
    Screen::Options options;
    options.moving = true;
    Screen screen(options);
    QVERIFY(open(&screen, 1));
    QVERIFY(screen.click("network_Garage"));
    QVERIFY(screen.waitFor("passkeyInput"));
    screen.type(QStringLiteral("abcdefgh"));
    QCOMPARE(screen.text("passkeyInput"), QString());
    QCOMPARE(screen.text("passkeyLock"), lock);

    screen.settings()->setProperty("moving", false);
    QVERIFY(!screen.item("passkeyLock"));
    screen.type(QStringLiteral("abcd"));
    QCOMPARE(screen.text("passkeyInput"), QStringLiteral("abcd"));
    screen.settings()->setProperty("moving", true);
    screen.type(QStringLiteral("efgh"));
    QCOMPARE(screen.text("passkeyInput"), QStringLiteral("abcd"));
    QCOMPARE(screen.text("passkeyLock"), lock);
    QVERIFY(screen.click("dialogClose"));

    QVERIFY(open(&screen, 2));
    QVERIFY(screen.click("hotspotNameInput"));
    screen.type(QStringLiteral("x"));
    QCOMPARE(screen.text("hotspotNameInput"), QStringLiteral("Morvek Car"));
    QCOMPARE(screen.text("hotspotNameLock"), lock);
    QCOMPARE(screen.text("passphraseLock"), lock);

    QVERIFY(open(&screen, 0));
    QVERIFY(screen.click("interface_eth0"));
    QVERIFY(screen.click("kind0"));
    QVERIFY(screen.waitFor("gatewayInput"));
    for (const char *field : {"addressLock", "netmaskLock", "gatewayLock"})
        QCOMPARE(screen.text(field), lock);
}

void tst_ScreenReach::aKeyboardIsGivenWayTo()
{
    Screen::Options options;
    options.size = {800, 480};
    Screen screen(options);
    QVERIFY(open(&screen, 0));
    QVERIFY(screen.click("interface_eth0"));
    QVERIFY(screen.click("kind0"));
    QVERIFY(screen.click("gatewayInput"));
    screen.settings()->setProperty("keyboardHeight", 240);
    screen.picture();
    QVERIFY(screen.placeOf(screen.item("gatewayInput")).bottom() <= 240);
    QVERIFY(screen.item("gatewayInput")->hasActiveFocus());

    screen.settings()->setProperty("keyboardHeight", 0);
    QVERIFY(open(&screen, 1));
    QVERIFY(screen.click("network_Garage"));
    QVERIFY(screen.waitFor("passkeyInput"));
    screen.settings()->setProperty("keyboardHeight", 200);
    screen.picture();
    screen.picture();
    QVERIFY(screen.placeOf(screen.item("passkeyInput")).bottom() <= 280);
    QVERIFY(screen.placeOf(screen.item("dialogAction")).bottom() <= 280);
}

void tst_ScreenReach::theNightHasNoLargeLightAreas()
{
    Screen::Options options;
    options.night = true;
    Screen screen(options);
    for (int page = 0; page < 3; ++page) {
        QVERIFY(open(&screen, page));
        const QImage grey = screen.picture().convertToFormat(QImage::Format_Grayscale8);
        qint64 light = 0;
        for (int y = 0; y < grey.height(); ++y) {
            const uchar *line = grey.constScanLine(y);
            light += std::count_if(line, line + grey.width(), [](uchar level) { return level > 96; });
        }
        const double share = double(light) / (grey.width() * grey.height());
        QVERIFY2(share > 0.005 && share < 0.1, qPrintable(QString::number(share)));
    }
}

MORVEK_SCREEN_TEST(tst_ScreenReach)
#include "tst_screenreach.moc"
