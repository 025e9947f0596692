// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0

Rectangle {
    width: 800
    height: 480

    NetworkServices {
        id: network
    }
    WifiController {
        id: wifi
        services: network
        looking: true
    }

    Text {
        id: heading
        text: wifi.stateText
        font.pixelSize: 32
    }
    ListView {
        anchors.fill: parent
        anchors.topMargin: 80
        model: wifi.networks
        delegate: Text {
            required property string displayName
            required property string security
            required property bool inUse

            height: 80
            text: displayName + ", " + security
            textFormat: Text.PlainText
            font.pixelSize: 32
            font.bold: inUse
        }
    }
}
