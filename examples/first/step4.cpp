// SPDX-License-Identifier: Apache-2.0
#include <networkservices.h>
#include <wificontroller.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

using namespace morvek;

/*! Joins a network with the first of several passkeys that fits. */
class Visitor
{
public:
    Visitor(WifiController *wifi, const QStringList &arguments)
        : m_wifi(wifi),
          m_ssid(arguments.value(1)),
          m_passkeys(arguments.mid(2))
    {
        QObject::connect(wifi, &WifiController::availabilityChanged, wifi, [this] { begin(); });
        begin();
    }

private:
    void begin()
    {
        if (m_wifi->availability() != WifiController::Ready)
            return;
        NetworkRequest *request = m_wifi->join(m_ssid, m_passkeys.value(m_tried));
        request->setDeadline(20000);
        QObject::connect(request, &NetworkRequest::finished, m_wifi, [this, request] { end(*request); });
    }

    void end(const NetworkRequest &request)
    {
        switch (request.failure()) {
        case NetworkRequest::NoFailure:
            m_out << "Passkey " << m_tried + 1 << " is right." << Qt::endl;
            return QCoreApplication::exit(0);
        case NetworkRequest::Lost: // begin() follows when the daemon is back
            m_out << request.sentence() << Qt::endl;
            return;
        case NetworkRequest::WrongPasskey:
            if (++m_tried < m_passkeys.size())
                return begin();
            Q_FALLTHROUGH();
        default:
            m_out << request.sentence() << Qt::endl;
            QCoreApplication::exit(1);
        }
    }

    QTextStream m_out {stdout};
    WifiController *m_wifi;
    QString m_ssid;
    QStringList m_passkeys;
    int m_tried = 0;
};

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    NetworkServices services;
    WifiController wifi(&services);
    Visitor visitor(&wifi, application.arguments());
    return application.exec();
}
