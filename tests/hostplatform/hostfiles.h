// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTS_HOSTFILES_H
#define MORVEK_TESTS_HOSTFILES_H

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

/*! The file or folder that stands for \a path. */
QString fileOf(const QString &path);
QByteArray content(const QString &path);
/*! Writes \a bytes into the file of \a path, and what leads to it. */
bool plant(const QString &path, const QByteArray &bytes);
/*! Permissions of the file, as of chmod. */
int modeOf(const QString &path);
/*! All files below the root, hidden ones too. */
QStringList allFiles();

/*! Names another root while it lives. */
class AnotherRoot
{
public:
    explicit AnotherRoot(const QString &root);
    ~AnotherRoot();

private:
    Q_DISABLE_COPY(AnotherRoot)
    QByteArray m_usual;
};

/*! Notes the lines of the log while it lives. */
class LogLines
{
public:
    LogLines();
    ~LogLines();

    QStringList lines;

private:
    Q_DISABLE_COPY(LogLines)
};

#endif
