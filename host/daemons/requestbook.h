// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_REQUESTBOOK_H
#define MORVEK_HOSTD_REQUESTBOOK_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QStringList>

#include <deque>

namespace morvek {

/*! What the daemons were asked lately, and how they answered, in the words of the log: no passkeys, no passphrases. */
class RequestBook
{
public:
    struct Entry
    {
        int number = 0; //!< counts from 1, over all daemons
        qint64 at = 0;  //!< milliseconds since the start
        QString daemon;
        QString message;
        QString interface; //!< that it names, if any
        QString ssid;      //!< likewise
        QString text;
        QStringList answers; //!< none as long as there are none
    };

    /*! So many are kept. */
    static constexpr int Most = 1000;

    RequestBook() { m_since.start(); }

    /*! Notes a request; the number that it gets. Long texts are cut. */
    int add(const Entry &entry);
    /*! Notes an answer to the request \a number, unless that is forgotten. */
    void addAnswer(int number, const QString &answer);
    const std::deque<Entry> &entries() const { return m_entries; }

private:
    std::deque<Entry> m_entries;
    int m_last = 0;
    QElapsedTimer m_since;
};

} // namespace morvek

#endif
