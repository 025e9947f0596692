// SPDX-License-Identifier: Apache-2.0
#include "passkey.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace morvek {

namespace {

class Buffer
{
public:
    Buffer() = default;

    /*! True while there is more to come. */
    bool readOn(int file)
    {
        ssize_t count = 0;
        do {
            count = ::read(file, m_bytes.data() + m_size, m_bytes.size() - m_size);
        } while (count < 0 && errno == EINTR);
        m_failed = count < 0;
        m_size += count > 0 ? size_t(count) : 0;
        return count > 0;
    }
    bool hasFailed() const { return m_failed; }

    /*! What was read, without one line feed at its end; empty when that is no line of text. */
    QString line() const
    {
        const bool ended = m_size > 0 && m_bytes[m_size - 1] == '\n';
        const QString text = QString::fromUtf8(m_bytes.data(), int(m_size - (ended ? 1 : 0)));
        const bool isText = std::none_of(text.begin(), text.end(), [](QChar character) {
            return character.category() == QChar::Other_Control || character == QChar::ReplacementCharacter;
        });
        return isText && m_size < m_bytes.size() ? text : QString();
    }

private:
    Q_DISABLE_COPY(Buffer)
    std::array<char, 1024> m_bytes;
    size_t m_size = 0;
    bool m_failed = false;
};

bool readAll(const QString &file, Buffer *buffer)
{
    if (file == QLatin1String("-")) {
        while (buffer->readOn(STDIN_FILENO)) { }
        return !buffer->hasFailed();
    }
    const int descriptor = ::open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    while (buffer->readOn(descriptor)) { }
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return !buffer->hasFailed();
}

} // namespace

bool isPossiblePasskey(const QString &passkey)
{
    static const QRegularExpression form(QStringLiteral("\\A([ -~]{8,63}|[0-9A-Fa-f]{64})\\z"));
    return form.match(passkey).hasMatch();
}

QString possiblePasskeys()
{
    return QStringLiteral(
        "a passkey has 8 to 63 plain letters, digits, blanks and signs (ASCII), or 64 hexadecimal digits");
}

bool readPasskeyFile(const QString &file, QString *passkey, QString *error)
{
    Buffer buffer;
    if (!readAll(file, &buffer)) {
        *error = QStringLiteral("--passkey-file \"%1\" cannot be read: %2").arg(file, qt_error_string(errno));
        return false;
    }
    *passkey = buffer.line();
    if (isPossiblePasskey(*passkey))
        return true;
    *error = QStringLiteral("--passkey-file \"%1\" holds no passkey: ").arg(file)
        + (passkey->isEmpty() ? QStringLiteral("it must be one line of text") : possiblePasskeys());
    return false;
}

QString readTypedPasskey()
{
    Buffer buffer;
    buffer.readOn(STDIN_FILENO); // a terminal gives one line at a time
    return buffer.line();
}

} // namespace morvek
