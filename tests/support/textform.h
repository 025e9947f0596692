// SPDX-License-Identifier: Apache-2.0
#ifndef TEXTFORM_H
#define TEXTFORM_H

#include <QtCore/QString>
#include <QtCore/QTextStream>

/*! What \a value writes into a text stream between two marks, so that nothing before or after it is missed. */
template<typename Value>
QString textForm(Value &&value)
{
    QString text;
    QTextStream stream(&text);
    stream << "<" << value << ">";
    stream.flush();
    return text.mid(1, text.size() - 2);
}

/*! The same of a stream that is set to write numbers in another way. */
template<typename Value>
QString textFormInAnyStream(Value &&value)
{
    QString text;
    QTextStream stream(&text);
    stream << Qt::hex << Qt::showbase << Qt::forcesign << Qt::uppercasedigits << value;
    stream.flush();
    return text;
}

#endif
