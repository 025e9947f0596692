// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTKIT_UNITPROCESS_H
#define MORVEK_TESTKIT_UNITPROCESS_H

#include <QtCore/QProcess>

namespace morvek {

/*! morvek-hostd. The kernel kills it with this process, however that ends. */
class UnitProcess : public QProcess
{
public:
    /*! The program; empty when it is nowhere, \a error says where it was looked for. */
    static QString find(QString *error);

    /*! It is to inherit \a line. */
    void setLine(int line) { m_line = line; }

protected:
    void setupChildProcess() override;

private:
    int m_line = -1;
};

} // namespace morvek

#endif
