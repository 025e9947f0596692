// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_MODELMIRROR_H
#define MORVEK_MODELMIRROR_H

#include <QtCore/QAbstractItemModel>
#include <QtCore/QStringList>
#include <QtTest/QAbstractItemModelTester>

#include <functional>

/*!
 * A list that follows a list model by its signals alone, as a view does. What it is told must be true, and no more than
 * what has changed: a reset, a change of layout, or a role that is told and has not changed, fails the test.
 */
class ModelMirror : public QObject
{
    Q_OBJECT

public:
    explicit ModelMirror(QAbstractItemModel *model);

    /*! What was told since the last call: "remove 1-2", "move 3-3 to 0", "insert 0-1", "change 0-3 level bars". */
    QStringList takeTold() { return std::exchange(m_told, {}); }
    /*! The values of \a role, row by row. */
    QVariantList values(const char *role) const;
    /*! Fails the test when the model is not what it has told. */
    void compare() const;

private:
    using Row = QMap<int, QVariant>;
    Row readRow(int row) const;
    void change(const QModelIndex &first, const QModelIndex &last, const QVector<int> &roles);

    QAbstractItemModel *m_model;
    QAbstractItemModelTester m_tester;
    QHash<int, QByteArray> m_names;
    QVector<Row> m_rows;
    QStringList m_told;
};

#endif
