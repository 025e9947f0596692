// SPDX-License-Identifier: Apache-2.0
#include "modelmirror.h"

#include <QtTest/QTest>

#include <algorithm>

ModelMirror::ModelMirror(QAbstractItemModel *model)
    : m_model(model),
      m_tester(model, QAbstractItemModelTester::FailureReportingMode::Fatal),
      m_names(model->roleNames())
{
    for (int row = 0; row < model->rowCount(); ++row)
        m_rows.append(readRow(row));
    connect(model, &QAbstractItemModel::modelReset, this, [] { QFAIL("the model was reset"); });
    connect(model, &QAbstractItemModel::layoutChanged, this, [] { QFAIL("the layout was changed"); });
    connect(model, &QAbstractItemModel::rowsRemoved, this, [this](const QModelIndex &, int first, int last) {
        m_told += QStringLiteral("remove %1-%2").arg(first).arg(last);
        m_rows.remove(first, last - first + 1);
    });
    connect(model, &QAbstractItemModel::rowsMoved, this,
            [this](const QModelIndex &, int first, int last, const QModelIndex &, int to) {
                m_told += QStringLiteral("move %1-%2 to %3").arg(first).arg(last).arg(to);
                const auto begin = m_rows.begin();
                if (to < first)
                    std::rotate(begin + to, begin + first, begin + last + 1);
                else
                    std::rotate(begin + first, begin + last + 1, begin + to);
            });
    connect(model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex &, int first, int last) {
        m_told += QStringLiteral("insert %1-%2").arg(first).arg(last);
        for (int row = first; row <= last; ++row)
            m_rows.insert(row, readRow(row));
    });
    connect(model, &QAbstractItemModel::dataChanged, this, &ModelMirror::change);
}

ModelMirror::Row ModelMirror::readRow(int row) const
{
    Row values;
    for (auto role = m_names.keyBegin(); role != m_names.keyEnd(); ++role)
        values.insert(*role, m_model->index(row, 0).data(*role));
    return values;
}

void ModelMirror::change(const QModelIndex &first, const QModelIndex &last, const QVector<int> &roles)
{
    QVERIFY2(!roles.isEmpty(), "all roles are told to have changed");
    QStringList names;
    for (const int role : roles)
        names += QString::fromLatin1(m_names.value(role));
    m_told += QStringLiteral("change %1-%2 %3").arg(first.row()).arg(last.row()).arg(names.join(QLatin1Char(' ')));
    for (int row = first.row(); row <= last.row(); ++row) {
        for (const int role : roles) {
            const QVariant value = m_model->index(row, 0).data(role);
            QVERIFY2(m_rows[row].value(role) != value, qPrintable(m_told.constLast()));
            m_rows[row][role] = value;
        }
    }
}

QVariantList ModelMirror::values(const char *role) const
{
    QVariantList values;
    for (const Row &row : m_rows)
        values += row.value(m_names.key(role));
    return values;
}

void ModelMirror::compare() const
{
    QCOMPARE(m_rows.size(), m_model->rowCount());
    for (int row = 0; row < m_rows.size(); ++row)
        QCOMPARE(m_rows[row], readRow(row));
}
