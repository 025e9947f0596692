// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0

Rectangle {
    id: screen

    property NetworkRequest request: null

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
        id: list

        property string asked: "" // the network whose passkey is asked for

        anchors.fill: parent
        anchors.topMargin: 80
        model: wifi.networks
        delegate: Column {
            id: row

            required property string ssid
            required property string displayName
            required property string security
            required property bool needsPasskey
            required property bool inUse
            readonly property bool isSubject: screen.request !== null && screen.request.subject === ssid

            Text {
                height: 80
                text: row.displayName + ", " + row.security
                textFormat: Text.PlainText
                font.pixelSize: 32
                font.bold: row.inUse

                TapHandler {
                    onTapped: {
                        if (row.needsPasskey)
                            list.asked = row.ssid;
                        else
                            screen.request = wifi.join(row.ssid);
                    }
                }
            }
            TextInput {
                visible: list.asked === row.ssid
                height: 80
                width: 800
                focus: visible
                echoMode: TextInput.Password
                inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText
                font.pixelSize: 32
                onVisibleChanged: if (visible) forceActiveFocus()
                onAccepted: {
                    screen.request = wifi.join(row.ssid, text);
                    list.asked = "";
                    clear();
                }
            }
            Text {
                visible: row.isSubject && text !== ""
                text: !row.isSubject ? ""
                    : screen.request.failure === NetworkRequest.WrongPasskey ? "Tap again to try another passkey."
                                                                             : screen.request.sentence
                textFormat: Text.PlainText
                font.pixelSize: 24
            }
        }
    }
}
