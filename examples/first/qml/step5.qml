// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0

Rectangle {
    width: 800
    height: 480

    NetworkServices {
        id: network
    }
    InterfaceController {
        id: unit
        services: network
    }

    Text {
        id: heading
        text: unit.availability !== NetworkController.Ready ? unit.availabilityText
                                                            : unit.online ? "Online" : "Not online"
        font.pixelSize: 32
    }
    ListView {
        anchors.fill: parent
        anchors.topMargin: 80
        // What was told last is shown faintly while nobody is there to tell more.
        opacity: unit.availability === NetworkController.Ready ? 1 : 0.5
        model: unit.interfaces
        delegate: Column {
            id: row

            required property string name
            required property int interfaceState
            required property string stateText
            property NetworkRequest repair: null

            Text {
                text: row.name + ": " + row.stateText
                textFormat: Text.PlainText
                font.pixelSize: 32
            }
            Text {
                visible: row.interfaceState === InterfaceModel.WithoutAddress
                height: 80
                text: "Repair"
                color: "blue"
                font.pixelSize: 32

                TapHandler {
                    onTapped: row.repair = unit.repair(row.name)
                }
            }
            Text {
                visible: row.repair !== null && text !== ""
                text: row.repair ? row.repair.sentence : ""
                textFormat: Text.PlainText
                font.pixelSize: 24
            }
        }
    }
}
