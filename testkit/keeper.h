// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTKIT_KEEPER_H
#define MORVEK_TESTKIT_KEEPER_H

#include <QtCore/QString>

namespace morvek {

/*!
 * Sees to it that a folder is removed when this process ends, however it does: a process of its own waits for the end
 * of all that hold line().
 */
class Keeper
{
public:
    Keeper() = default;
    ~Keeper();

    /*! False when there can be none; \a error says why. */
    bool start(const QString &folder, QString *error);
    /*! What a child process inherits that writes into the folder: it is not removed before that has ended, too. */
    int line() const { return m_line; }

private:
    Q_DISABLE_COPY(Keeper)
    int m_line = -1;
};

} // namespace morvek

#endif
