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
    }

    Text {
        text: wifi.stateText
        font.pixelSize: 32
    }
}
