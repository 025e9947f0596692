// SPDX-License-Identifier: Apache-2.0
#include "screentest.h"

#include <testunit.h>

#include <QtGui/QFontInfo>

using namespace morvek;

/*!
 * The screen looks as it was approved. With MORVEK_APPROVE_PICTURES in the environment, what it looks like now is
 * approved: look at each of the pictures then.
 */
class tst_ScreenPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void whatIsNotTheSameIsNoticed();
    void looksAsApproved_data();
    void looksAsApproved();

private:
    static QString fileOf(const QString &folder, const QString &name);
    /*! With the 64 colours that it has most of, so that its file is small. */
    static QImage withFewColours(const QImage &picture);
    /*! How much of them differs in more than how edges are smoothed, 0 to 1; 1 when they have different sizes. */
    static double difference(const QImage &one, const QImage &other);

    static constexpr double Tolerance = 0.001;
};

namespace {

/*! The mean colour of a block of 4 by 4 pixels. */
void meanOf(const QImage &picture, int left, int top, int mean[3])
{
    mean[0] = mean[1] = mean[2] = 0;
    for (int y = top; y < top + 4; ++y) {
        for (int x = left; x < left + 4; ++x) {
            const QRgb colour = picture.pixel(x, y);
            mean[0] += qRed(colour);
            mean[1] += qGreen(colour);
            mean[2] += qBlue(colour);
        }
    }
    for (int i = 0; i < 3; ++i)
        mean[i] /= 16;
}

} // namespace

QString tst_ScreenPictures::fileOf(const QString &folder, const QString &name)
{
    return QStringLiteral("%1/%2.png").arg(folder, name);
}

QImage tst_ScreenPictures::withFewColours(const QImage &picture)
{
    QHash<QRgb, int> uses;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++uses[picture.pixel(x, y)];
    }
    QVector<QRgb> colours = uses.keys().toVector();
    std::sort(colours.begin(), colours.end(), [&](QRgb one, QRgb other) {
        return std::make_pair(-uses[one], one) < std::make_pair(-uses[other], other);
    });
    const QVector<QRgb> kept = colours.mid(0, 64);
    QHash<QRgb, int> nearest;
    for (const QRgb colour : qAsConst(colours)) {
        const auto distance = [&](QRgb other) {
            return qAbs(qRed(colour) - qRed(other)) + qAbs(qGreen(colour) - qGreen(other))
                + qAbs(qBlue(colour) - qBlue(other));
        };
        nearest[colour] = int(std::min_element(kept.cbegin(), kept.cend(),
                                               [&](QRgb one, QRgb other) { return distance(one) < distance(other); })
                              - kept.cbegin());
    }
    QImage result(picture.size(), QImage::Format_Indexed8);
    result.setColorTable(kept);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            result.setPixel(x, y, uint(nearest[picture.pixel(x, y)]));
    }
    return result;
}

double tst_ScreenPictures::difference(const QImage &one, const QImage &other)
{
    if (one.size() != other.size())
        return 1;
    int blocks = 0;
    int different = 0;
    for (int y = 0; y + 4 <= one.height(); y += 4) {
        for (int x = 0; x + 4 <= one.width(); x += 4) {
            int a[3];
            int b[3];
            meanOf(one, x, y, a);
            meanOf(other, x, y, b);
            ++blocks;
            different += qAbs(a[0] - b[0]) > 40 || qAbs(a[1] - b[1]) > 40 || qAbs(a[2] - b[2]) > 40;
        }
    }
    return double(different) / blocks;
}

void tst_ScreenPictures::initTestCase()
{
    QCOMPARE(QFontInfo(QGuiApplication::font()).family(), QStringLiteral("DejaVu Sans"));
}

void tst_ScreenPictures::cleanup()
{
    QCOMPARE(Screen::takeWarnings(), QStringList());
}

void tst_ScreenPictures::whatIsNotTheSameIsNoticed()
{
    const QImage picture(fileOf(QStringLiteral(MORVEK_PICTURES), QStringLiteral("wifi-day-800x480")));
    QVERIFY(!picture.isNull());
    QCOMPARE(difference(picture, picture), 0.0);
    // What stands four pixels beside its place, and a mark that is missing, are noticed; noise is not.
    QVERIFY(difference(picture, picture.copy(4, 0, picture.width(), picture.height())) > Tolerance);
    QImage changed = picture.convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y < changed.height(); ++y) {
        for (int x = 0; x < changed.width(); ++x)
            changed.setPixel(x, y, changed.pixel(x, y) ^ QRgb(((x * 7 + y * 13) % 16) * 0x010101));
    }
    QVERIFY(difference(picture, changed) <= Tolerance);
    changed = picture.convertToFormat(QImage::Format_RGB32);
    for (int y = 20; y < 60; ++y) {
        for (int x = 230; x < 330; ++x)
            changed.setPixel(x, y, 0xffffffff); // the word Wi-Fi
    }
    QVERIFY(difference(picture, changed) > Tolerance);
}

void tst_ScreenPictures::looksAsApproved_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("night");
    for (const char *page : {"networks", "address", "wifi", "passkey", "hotspot"}) {
        for (const QSize size : {QSize(800, 480), QSize(1280, 720), QSize(720, 1280)}) {
            for (const bool night : {false, true})
                QTest::addRow("%s-%s-%dx%d", page, night ? "night" : "day", size.width(), size.height())
                    << QString::fromLatin1(page) << size << night;
        }
    }
}

void tst_ScreenPictures::looksAsApproved()
{
    QFETCH(const QString, page);
    QFETCH(const QSize, size);
    QFETCH(const bool, night);
    TestUnit unit;
    QVERIFY(unit.start());
    Screen::Options options;
    options.size = size;
    options.night = night;
    Screen screen(options);
    QVERIFY(screen.isThere());
    if (page == QLatin1String("networks")) {
        QVERIFY(screen.open(0));
        QVERIFY(unit.act("link-lost", {{"interface", "eth0"}}));
        QTRY_COMPARE(screen.property("interface_eth0", "stateText").toString(),
                     QStringLiteral("No link: it cannot be used now."));
        QTRY_COMPARE(screen.property("interface_eth0.5", "stateText").toString(),
                     QStringLiteral("No link: it cannot be used now."));
    } else if (page == QLatin1String("address")) {
        QVERIFY(screen.open(0));
        QVERIFY(screen.click("interface_eth0.5"));
        QVERIFY(screen.click("gatewayInput"));
        screen.key(Qt::Key_A, Qt::ControlModifier);
        screen.type(QStringLiteral("172.16.6.1"));
        screen.key(Qt::Key_Return);
        QVERIFY(screen.waitFor("gatewayFault"));
    } else if (page == QLatin1String("hotspot")) {
        QVERIFY(screen.open(2));
        QVERIFY(screen.waitFor("hotspotNameInput"));
        QVERIFY(screen.click("hotspotSwitch"));
        QTRY_VERIFY(screen.property("hotspotSwitch", "on").toBool()
                    && !screen.property("hotspotSwitch", "busy").toBool());
    } else {
        QVERIFY(screen.open(1));
        QVERIFY(screen.waitFor("network_Garage"));
        if (page == QLatin1String("passkey")) {
            QVERIFY(screen.click("network_Garage"));
            QVERIFY(screen.waitFor("passkeyInput"));
            screen.type(QStringLiteral("close sesame 42"));
            screen.key(Qt::Key_Return);
            QVERIFY(screen.waitFor("dialogOutcome"));
        }
    }
    screen.picture();
    const QImage picture = screen.picture();
    const QString name = QLatin1String(QTest::currentDataTag());
    const QString file = fileOf(QStringLiteral(MORVEK_PICTURES), name);
    if (qEnvironmentVariableIsSet("MORVEK_APPROVE_PICTURES"))
        QVERIFY(withFewColours(picture).save(file, "PNG", 0));
    const double found = difference(QImage(file), picture);
    if (found > Tolerance) {
        const QString now = fileOf(QDir::currentPath(), name);
        withFewColours(picture).save(now);
        QFAIL(qPrintable(QStringLiteral("%1 % differ: see %2").arg(100 * found).arg(now)));
    }
}

MORVEK_SCREEN_TEST(tst_ScreenPictures)
#include "tst_screenpictures.moc"
