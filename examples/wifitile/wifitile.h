// SPDX-License-Identifier: Apache-2.0
#ifndef WIFITILE_H
#define WIFITILE_H

#include <QtCore/QObject>
#include <QtCore/QTimer>

namespace morvek {
class WifiService;
} // namespace morvek

/*! The Wi-Fi tile of a home screen: a text, and what a tap on it does. */
class WifiTile : public QObject
{
    Q_OBJECT

public:
    explicit WifiTile(QObject *parent = nullptr);
    ~WifiTile() override;

    QString text() const;
    /*! Switches the radio, and says so when nothing comes of it within \a patience milliseconds. */
    void tap(int patience = 3000);

private:
    morvek::WifiService *m_wifi;
    QTimer m_switching;
    bool m_hasFailed = false;
};

#endif
