// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0

/*! The Wi-Fi tile of a home screen; a tap switches the radio. */
Rectangle {
    id: tile

    property alias services: wifi.services
    property alias text: label.text
    property NetworkRequest request: null

    width: 300
    height: 100
    color: "black"

    WifiController { id: wifi }

    Text {
        id: label

        anchors.centerIn: parent
        color: "white"
        textFormat: Text.PlainText
        text: {
            if (tile.request && tile.request.failure !== NetworkRequest.NoFailure)
                return tile.request.sentence
            return wifi.connected ? wifi.ssid : wifi.stateText
        }
    }
    TapHandler { onTapped: tile.request = wifi.setPowered(!wifi.powered) }
}
