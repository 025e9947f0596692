// SPDX-License-Identifier: Apache-2.0
#ifndef LOCALENCODING_H
#define LOCALENCODING_H

#include <QtCore/QTextCodec>

/*! The local 8-bit encoding while it lives, wherever the test runs. */
class LocalEncoding
{
public:
    explicit LocalEncoding(const char *name)
        : m_former(QTextCodec::codecForLocale())
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(name));
    }
    ~LocalEncoding() { QTextCodec::setCodecForLocale(m_former); }

private:
    Q_DISABLE_COPY(LocalEncoding)
    QTextCodec *m_former;
};

#endif
