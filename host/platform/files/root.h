// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ROOT_H
#define MORVEK_ROOT_H

#include "filedescriptor.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cerrno>
#include <memory>

#include <sys/stat.h>

namespace morvek {

/*!
 * The folder below which all objects stand. The way to it is judged once, and then it is held by a descriptor: what is
 * below it is reached from there. When its path names another one, or its owner or mode has changed, it is judged anew,
 * which shows within a second, and at once when something was not found. What is not trusted, or not there, is not
 * held.
 */
class Root
{
public:
    /*! The one of this thread that the environment names; it lasts as long as somebody has it. */
    static std::shared_ptr<Root> instance();
    /*! The path that the environment names, trusted or not. */
    static QByteArray folder();

    const QByteArray &path() const { return m_path; }
    /*! Before it is used again, it looks where its path leads. */
    void lookAgain();
    /*! Why it must not be used; empty when it may, or does not exist yet. */
    QString distrust();
    /*! Creates it, accessible to this user only, unless it is there. */
    bool make(QString *error);
    /*! What \a call gives, which gets the descriptor of the root and gives -1 with errno when it fails. */
    template<typename Call>
    int below(const Call &call)
    {
        for (;;) {
            const int result = hold() ? call(m_folder.get()) : -1;
            const bool isMissing = result == -1 && (errno == ENOENT || errno == ENOTDIR);
            if (!isMissing || !m_folder.isOpen() || isInPlace())
                return result;
            m_folder.reset();
        }
    }

private:
    explicit Root(const QByteArray &path)
        : m_path(path)
    {
    }
    Q_DISABLE_COPY(Root)

    bool hold();
    bool isInPlace();
    void judge();

    QByteArray m_path;
    FileDescriptor m_folder;
    struct stat m_status = {}; // of the folder that is held
    uid_t m_user = 0;          // for whom it was judged
    qint64 m_lookedAt = 0;
    int m_forks = 0;
    QString m_distrust;
};

} // namespace morvek

#endif
