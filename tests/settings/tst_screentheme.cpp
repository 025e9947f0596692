// SPDX-License-Identifier: Apache-2.0
#include "screentest.h"

#include <QtGui/QColor>
#include <QtQml/QQmlComponent>

#include <cmath>

namespace {

const QStringList papers {QStringLiteral("page"), QStringLiteral("card"), QStringLiteral("field")};

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &colour)
{
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double contrast(const QColor &one, const QColor &other)
{
    const double a = luminance(one);
    const double b = luminance(other);
    return (qMax(a, b) + 0.05) / (qMin(a, b) + 0.05);
}

} // namespace

class tst_ScreenTheme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void contrastIsComputedAsItIsDefined();
    void everyInkIsReadableOnEveryPaper_data();
    void everyInkIsReadableOnEveryPaper();
    void papersOfTheNightAreDark();
    void measuresAreThoseOfACar();

private:
    QQmlEngine m_engine;
    std::unique_ptr<QObject> m_holder;
    QObject *m_theme = nullptr;
};

void tst_ScreenTheme::init()
{
    QQmlComponent component(&m_engine);
    component.setData(
        "import QtQml 2.15\nimport \"qrc:/settings/controls\"\nQtObject { property QtObject theme: Theme }", QUrl());
    m_holder.reset(component.create());
    QVERIFY2(m_holder, qPrintable(component.errorString()));
    m_theme = m_holder->property("theme").value<QObject *>();
    QVERIFY(m_theme);
}

void tst_ScreenTheme::contrastIsComputedAsItIsDefined()
{
    QCOMPARE(contrast(Qt::black, Qt::white), 21.0);
    QCOMPARE(contrast(Qt::white, Qt::white), 1.0);
    // The lightest grey that is said to reach 4.5 on white.
    QVERIFY(contrast(QColor(0x76, 0x76, 0x76), Qt::white) >= 4.5);
    QVERIFY(contrast(QColor(0x77, 0x77, 0x77), Qt::white) < 4.5);
}

void tst_ScreenTheme::everyInkIsReadableOnEveryPaper_data()
{
    QTest::addColumn<bool>("night");
    QTest::addRow("day") << false;
    QTest::addRow("night") << true;
}

void tst_ScreenTheme::everyInkIsReadableOnEveryPaper()
{
    QFETCH(const bool, night);
    m_theme->setProperty("night", night);
    QStringList inks;
    const QMetaObject *type = m_theme->metaObject();
    for (int i = 0; i < type->propertyCount(); ++i) {
        if (type->property(i).userType() == QMetaType::QColor
            && !papers.contains(QLatin1String(type->property(i).name())))
            inks += QLatin1String(type->property(i).name());
    }
    inks.sort();
    QCOMPARE(inks, QStringList({"accent", "bad", "faint", "good", "ink"}));
    for (const QString &paper : papers) {
        for (const QString &ink : qAsConst(inks)) {
            const auto below = m_theme->property(qPrintable(paper)).value<QColor>();
            const auto above = m_theme->property(qPrintable(ink)).value<QColor>();
            QVERIFY2(contrast(above, below) >= 4.5,
                     qPrintable(QStringLiteral("%1 on %2: %3").arg(ink, paper).arg(contrast(above, below))));
        }
    }
}

void tst_ScreenTheme::papersOfTheNightAreDark()
{
    m_theme->setProperty("night", true);
    for (const QString &paper : papers)
        QVERIFY2(luminance(m_theme->property(qPrintable(paper)).value<QColor>()) < 0.03, qPrintable(paper));
}

void tst_ScreenTheme::measuresAreThoseOfACar()
{
    QCOMPARE(m_theme->property("target").toInt(), 76);
    QCOMPARE(m_theme->property("decisive").toInt(), 32);
    QCOMPARE(m_theme->property("support").toInt(), 24);
}

MORVEK_SCREEN_TEST(tst_ScreenTheme)
#include "tst_screentheme.moc"
