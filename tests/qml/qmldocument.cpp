// SPDX-License-Identifier: Apache-2.0
#include "qmldocument.h"

#include <QtCore/QUrl>
#include <QtQml/QQmlContext>
#include <QtQml/QQmlExpression>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>
#include <QtTest/QtTest>

#include <algorithm>

namespace {

/*! The items below \a item, and itself, that can be seen and have a text. */
void gather(QQuickItem *item, QVector<QQuickItem *> *found)
{
    if (!item->isVisible())
        return;
    if (!item->property("text").toString().isEmpty())
        found->append(item);
    for (QQuickItem *child : item->childItems())
        gather(child, found);
}

QVector<QQuickItem *> seen(const QQuickWindow *window)
{
    QVector<QQuickItem *> found;
    if (window)
        gather(window->contentItem(), &found);
    std::stable_sort(found.begin(), found.end(), [](const QQuickItem *one, const QQuickItem *other) {
        return one->mapToScene({}).y() < other->mapToScene({}).y();
    });
    return found;
}

QPoint middleOf(const QQuickItem *item)
{
    return item->mapToScene({item->width() / 2, item->height() / 2}).toPoint();
}

} // namespace

QmlDocument::QmlDocument()
    : m_component(&m_engine)
{
}

QmlDocument::QmlDocument(const char *text)
    : QmlDocument()
{
    m_component.setData(QByteArrayLiteral("import QtQuick 2.15\nimport Morvek.Network 1.0\n") + text, QUrl());
    begin();
}

std::unique_ptr<QmlDocument> QmlDocument::ofFile(const QString &path)
{
    std::unique_ptr<QmlDocument> document(new QmlDocument);
    document->m_component.loadUrl(QUrl::fromLocalFile(QStringLiteral(MORVEK_PROJECT "/") + path));
    document->begin();
    return document;
}

QmlDocument::~QmlDocument() = default;

void QmlDocument::begin()
{
    if (!m_component.isReady())
        return;
    m_root.reset(m_component.create());
    auto item = qobject_cast<QQuickItem *>(m_root.get());
    if (!item)
        return;
    m_window.reset(new QQuickWindow);
    m_window->resize(item->size().toSize().expandedTo({1, 1}));
    item->setParentItem(m_window->contentItem());
    m_window->show();
    m_window->requestActivate();
}

QVariant QmlDocument::evaluate(const char *expression) const
{
    QQmlExpression evaluated(qmlContext(m_root.get()), m_root.get(), QString::fromUtf8(expression));
    bool isUndefined = false;
    const QVariant value = evaluated.evaluate(&isUndefined);
    return isUndefined ? QVariant() : value;
}

void QmlDocument::collect()
{
    m_engine.collectGarbage();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QStringList QmlDocument::texts() const
{
    QStringList texts;
    for (const QQuickItem *item : seen(m_window.get()))
        texts.append(item->property("text").toString());
    return texts;
}

QQuickItem *QmlDocument::item(const QString &text) const
{
    for (QQuickItem *item : seen(m_window.get())) {
        if (item->property("text").toString() == text)
            return item;
    }
    return nullptr;
}

bool QmlDocument::tap(const QString &text) const
{
    const QQuickItem *item = this->item(text);
    if (item)
        QTest::mouseClick(m_window.get(), Qt::LeftButton, Qt::NoModifier, middleOf(item));
    return item;
}

void QmlDocument::type(const QString &text) const
{
    for (const QChar character : text)
        QTest::keyClick(m_window.get(), character.toLatin1());
}
