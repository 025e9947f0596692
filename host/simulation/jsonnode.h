// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_JSONNODE_H
#define MORVEK_HOSTD_JSONNODE_H

#include <QtCore/QJsonValue>
#include <QtCore/QStringList>
#include <QtCore/QVector>

namespace morvek {

/*!
 * A JSON value and its place in its document, such as "timeline[2].interface".
 *
 * Whatever does not fit is noted with its place. The first such note stays; reading goes on with default values, so
 * that a reader need not ask after each step.
 */
class JsonNode
{
public:
    /*! The document's top level. The note is left in \a error, which must live as long as the nodes. */
    JsonNode(const QJsonValue &value, QString *error);

    QString place() const { return m_place; }
    /*! Notes \a text with this place, unless there is a note already. */
    void fail(const QString &text) const;
    /*! Whether there is a note, of whatever place. */
    bool hasFailed() const { return !m_error->isEmpty(); }

    /*! Notes a value that is no object, or the first key that is none of \a keys. */
    void expectObject(const QStringList &keys) const;
    bool has(const QString &key) const;
    /*! The member \a key; notes that it is missing when there is none. */
    JsonNode member(const QString &key) const;
    /*! The members of an object whose keys are free, in key order. */
    QVector<JsonNode> members() const;
    /*! The last key that leads here. */
    QString key() const { return m_key; }

    QJsonValue value() const { return m_value; }
    QVector<JsonNode> items() const;
    QString text() const;
    bool flag() const;
    int number(int least, int most) const;
    QStringList texts() const;

    QString textOr(const QString &key, const QString &otherwise) const;
    bool flagOr(const QString &key, bool otherwise) const;
    int numberOr(const QString &key, int least, int most, int otherwise) const;

private:
    JsonNode(const QJsonValue &value, const QString &place, const QString &key, QString *error);

    QJsonValue m_value;
    QString m_place;
    QString m_key;
    QString *m_error;
};

} // namespace morvek

#endif
