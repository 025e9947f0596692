// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SECRET_P_H
#define MORVEK_SECRET_P_H

#include <QtCore/QString>

#include <memory>

namespace morvek {

/*!
 * A text that must not stay in memory, such as a passkey: it shares nothing with other texts, is copied only on demand,
 * and is wiped when it is cleared, replaced or destroyed. What it is moved to takes its memory over.
 *
 * Out of reach is what others hold: the text that a Secret was made of, which is its owner's, and the copies that the
 * library makes of what it is given.
 *
 * \code
 * QString text = m_passkey.text();
 * config.setPassphrase(text);
 * service->connect(config); // written to the daemon by now
 * config = WifiConnectionConfig(); // lets go of the text
 * Secret::wipe(&text);
 * \endcode
 */
class Secret
{
public:
    Secret() = default;
    explicit Secret(const QString &text);
    Secret(Secret &&other) noexcept;
    Secret &operator=(Secret &&other) noexcept;
    ~Secret();

    Secret copy() const;

    bool operator==(const Secret &other) const;
    bool operator!=(const Secret &other) const { return !(*this == other); }

    bool isEmpty() const { return m_size == 0; }
    int size() const { return m_size; }
    QChar at(int i) const { return m_characters[size_t(i)]; }

    void clear();

    /*! A text with memory of its own, for those who take no other: wipe() it. */
    QString text() const;
    /*! Wipes \a text and makes it null. When it shares its memory, that is others', too, and stays as it is. */
    static void wipe(QString *text);

private:
    Q_DISABLE_COPY(Secret)
    Secret(const QChar *characters, int size);

    std::unique_ptr<QChar[]> m_characters;
    int m_size = 0;
};

} // namespace morvek

#endif
