// SPDX-License-Identifier: Apache-2.0
#include "privatebus.h"

#include "patience.h"

#include <QtCore/QFile>

namespace {

const char *const Configuration = R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type><listen>%1</listen><auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/><allow own="*"/><allow eavesdrop="true"/>
    <allow send_type="method_call"/><allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/><allow receive_type="signal"/>
    <allow receive_type="method_return"/><allow receive_type="error"/>
  </policy>
</busconfig>
)";

} // namespace

PrivateBus::PrivateBus()
{
    QFile file(m_folder.filePath(QStringLiteral("bus.conf")));
    if (!file.open(QIODevice::WriteOnly)) {
        m_error = file.errorString();
        return;
    }
    file.write(QString::fromLatin1(Configuration).arg(address()).toUtf8());
    file.close();
    m_process.setStandardErrorFile(m_folder.filePath(QStringLiteral("bus.log")));
    m_process.start(QStringLiteral("dbus-daemon"),
                    {QStringLiteral("--config-file=") + file.fileName(), QStringLiteral("--nofork"),
                     QStringLiteral("--nopidfile"), QStringLiteral("--print-address")});
    // It tells its address once it can be reached.
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(Patience)) {
            m_error = QStringLiteral("dbus-daemon: ") + m_process.errorString();
            return;
        }
    }
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address().toUtf8());
}

PrivateBus::~PrivateBus()
{
    m_process.kill();
    m_process.waitForFinished(Patience);
}

QString PrivateBus::address() const
{
    return QStringLiteral("unix:path=") + m_folder.filePath(QStringLiteral("bus"));
}
