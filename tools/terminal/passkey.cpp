// SPDX-License-Identifier: Apache-2.0
#include "passkey.h"

#include "passkeyprompt.h"

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

    /*! What was read, without one end of a line, of any system; empty when that is no line of text. */
    QString line() const
    {
        QString text = QString::fromUtf8(m_bytes.data(), int(m_size));
        for (const QLatin1String end : {QLatin1String("\r\n"), QLatin1String("\n")}) {
            if (!text.endsWith(end))
                continue;
            text.chop(end.size());
            break;
        }
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

/*! Whether any network can have \a passkey; what else there is, daemons refuse. */
bool isPossiblePasskey(const QString &passkey)
{
    static const QRegularExpression form(QStringLiteral("\\A([ -~]{8,63}|[0-9A-Fa-f]{64})\\z"));
    return form.match(passkey).hasMatch();
}

QString possiblePasskeys(const QString &kind)
{
    return QStringLiteral("a %1 has 8 to 63 plain letters, digits, blanks and signs (ASCII), or 64 hexadecimal digits")
        .arg(kind);
}

/*! Reads the one line of \a file, "-" for standard input. */
bool readFile(const QString &file, const QString &kind, QString *passkey, QString *error)
{
    Buffer buffer;
    const QString option = passkeyFileOption(kind).name;
    if (!readAll(file, &buffer)) {
        *error = QStringLiteral("--%1 \"%2\" cannot be read: %3").arg(option, file, qt_error_string(errno));
        return false;
    }
    *passkey = buffer.line();
    if (isPossiblePasskey(*passkey))
        return true;
    *error = QStringLiteral("--%1 \"%2\" holds no %3: ").arg(option, file, kind)
        + (passkey->isEmpty() ? QStringLiteral("it must be one line of text") : possiblePasskeys(kind));
    return false;
}

} // namespace

Option passkeyFileOption(const QString &kind)
{
    return {kind + QLatin1String("-file"), QStringLiteral("FILE"),
            QStringLiteral("the %1 is the one line of FILE, \"-\" for standard input").arg(kind)};
}

bool readGivenPasskey(const CommandLine &line, const QString &kind, QString *passkey, QString *error)
{
    const QString option = passkeyFileOption(kind).name;
    const QString file = line.options.value(option);
    const bool typed = file == QLatin1String("-") && PasskeyPrompt::isPossible();
    return !line.has(option) || typed || readFile(file, kind, passkey, error);
}

QString readTypedPasskey()
{
    Buffer buffer;
    buffer.readOn(STDIN_FILENO); // a terminal gives one line at a time
    return buffer.line();
}

QString faultOfTyped(const QString &kind, const QString &passkey)
{
    if (passkey.isEmpty())
        return QStringLiteral("no %1 was typed").arg(kind);
    return isPossiblePasskey(passkey) ? QString() : possiblePasskeys(kind);
}

} // namespace morvek
