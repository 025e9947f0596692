// SPDX-License-Identifier: Apache-2.0
#include "attributereader.h"

#include "attributes.h"
#include "jsonnode.h"

#include <limits>

namespace morvek {

namespace {

/*! Bytes that no JSON value stands for: {"encoding": "json", "text": "[1,"} or with "base64". */
ZopVariant readBytes(const JsonNode &node)
{
    const QString encoding = QStringLiteral("encoding");
    const QString text = QStringLiteral("text");
    const QString base64 = QStringLiteral("base64");
    node.expectObject({encoding, text, base64});
    if (node.has(text) == node.has(base64))
        node.fail(QStringLiteral("needs either \"text\" or \"base64\""));
    QByteArray bytes = node.textOr(text, QString()).toUtf8();
    if (node.has(base64)) {
        const auto decoded = QByteArray::fromBase64Encoding(node.member(base64).text().toUtf8(),
                                                            QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            node.member(base64).fail(QStringLiteral("is not base64"));
        bytes = decoded.decoded;
    }
    return ZopVariant(bytes, node.textOr(encoding, QStringLiteral("text")).toUtf8());
}

} // namespace

ZopVariant readAttributeValue(const JsonNode &node)
{
    switch (node.value().type()) {
    case QJsonValue::String:
        return node.text();
    case QJsonValue::Bool:
        return truthValue(node.flag());
    case QJsonValue::Double:
        return node.number(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    case QJsonValue::Array:
        return node.value().toArray();
    case QJsonValue::Object:
        return readBytes(node);
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        break;
    }
    node.fail(QStringLiteral("null is no value; the event \"remove\" removes an attribute"));
    return {};
}

} // namespace morvek
