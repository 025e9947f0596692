// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_QMLDOCUMENT_H
#define MORVEK_TEST_QMLDOCUMENT_H

#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>

#include <memory>

class QQuickItem;
class QQuickWindow;

/*! A QML document in an engine of its own; in a window, if it is something to be seen. */
class QmlDocument
{
public:
    /*! The document \a text, after the imports that the tests need. */
    explicit QmlDocument(const char *text);
    /*! That in the file \a path of the project. */
    static std::unique_ptr<QmlDocument> ofFile(const QString &path);
    ~QmlDocument();

    QObject *root() const { return m_root.get(); }
    QQuickWindow *window() const { return m_window.get(); }
    /*! Why there is no root. */
    QString errors() const { return m_component.errorString(); }
    QQmlEngine &engine() { return m_engine; }

    /*! What the JavaScript \a expression is inside the root; undefined when it throws. */
    QVariant evaluate(const char *expression) const;
    QObject *object(const char *expression) const { return evaluate(expression).value<QObject *>(); }
    /*! Collects what JavaScript does not use any more. */
    void collect();

    /*! The texts that can be seen, from the top. */
    QStringList texts() const;
    /*! The item that shows \a text; null when there is none. */
    QQuickItem *item(const QString &text) const;
    /*! A finger that taps it; false when there is none. */
    bool tap(const QString &text) const;
    void type(const QString &text) const;

private:
    QmlDocument();
    void begin();

    QQmlEngine m_engine;
    QQmlComponent m_component;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<QObject> m_root;
};

#endif
