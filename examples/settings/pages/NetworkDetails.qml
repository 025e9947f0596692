// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0
import "../controls"

/*! One network of the car, and the form that configures it. */
FocusScope {
    id: details

    property InterfaceController controller: null
    property string lock: ""
    property InterfaceRow row: null
    property bool automatic: true
    /*! Faults are shown from the first attempt on. */
    property bool tried: false
    signal left()

    function show(newRow) {
        row = newRow;
        tried = false;
        if (!row)
            return;
        automatic = row.model.automatic;
        form.address = address.text = row.model.address;
        form.netmask = netmask.text = row.model.netmask;
        form.gateway = gateway.text = row.model.gateway;
        back.forceActiveFocus(Qt.TabFocusReason);
        scroller.contentY = 0;
    }

    function apply() {
        tried = true;
        if (automatic)
            row.request = controller.configureAutomatic(row.name);
        else if (form.valid)
            row.request = controller.configureManual(row.name, form);
    }

    Keys.onEscapePressed: left()
    Keys.onBackPressed: left()

    Ipv4Form { id: form }

    Scroller {
        id: scroller
        anchors.fill: parent

        Row {
            width: parent.width
            spacing: Theme.gap
            CarButton {
                id: back
                objectName: "back"
                contentItem: Item {
                    implicitWidth: 28
                    Chevron { anchors.centerIn: parent; back: true; color: Theme.accent }
                }
                Accessible.name: qsTr("Back")
                onClicked: details.left()
            }
            CarText {
                width: parent.width - back.width - Theme.gap
                anchors.verticalCenter: parent.verticalCenter
                text: details.row ? details.row.typeText + " · " + details.row.displayName : ""
            }
        }
        Away {
            width: parent.width
            controller: details.controller
        }
        Notice {
            objectName: "detailsGone"
            width: parent.width
            text: details.row ? "" : qsTr("This network is not there any more.")
        }
        Column {
            width: parent.width
            visible: details.row !== null
            spacing: Theme.gap

            SupportText {
                objectName: "detailsState"
                width: parent.width
                text: details.row ? details.row.model.stateText : ""
            }
            Repeater {
                model: details.row ? [
                    [qsTr("Address"), details.row.model.address === "" ? ""
                        : details.row.model.address + "/" + details.row.model.prefixLength],
                    [qsTr("Gateway"), details.row.model.gateway],
                    [qsTr("Carried by"), details.row.model.parentName],
                    [qsTr("Hardware address"), details.row.model.macAddress]
                ].filter(function(line) { return line[1] !== ""; }) : []
                Row {
                    required property var modelData
                    width: parent.width
                    SupportText { width: Math.min(260, parent.width / 2); text: parent.modelData[0] }
                    SupportText {
                        width: parent.width - Math.min(260, parent.width / 2)
                        color: Theme.ink
                        text: parent.modelData[1]
                    }
                }
            }
            CarChoice {
                objectName: "kind"
                width: parent.width
                label: qsTr("Its address")
                texts: [qsTr("Automatic"), qsTr("Manual")]
                values: [1, 0]
                current: details.automatic ? 1 : 0
                onChosen: details.automatic = value === 1
            }
            Column {
                width: parent.width
                visible: !details.automatic
                spacing: Theme.gap

                CarField {
                    id: address
                    objectName: "address"
                    width: parent.width
                    label: qsTr("Address")
                    hints: Qt.ImhPreferNumbers | Qt.ImhNoPredictiveText
                    lock: details.lock
                    fault: details.tried ? form.addressText : ""
                    onEdited: form.address = text
                }
                CarField {
                    id: netmask
                    objectName: "netmask"
                    width: parent.width
                    label: qsTr("Netmask, or the length of the prefix")
                    hints: Qt.ImhPreferNumbers | Qt.ImhNoPredictiveText
                    lock: details.lock
                    fault: details.tried ? form.netmaskText : ""
                    onEdited: form.netmask = text
                }
                CarField {
                    id: gateway
                    objectName: "gateway"
                    width: parent.width
                    label: qsTr("Gateway")
                    hints: Qt.ImhPreferNumbers | Qt.ImhNoPredictiveText
                    lock: details.lock
                    fault: details.tried ? form.gatewayText : ""
                    onEdited: form.gateway = text
                    onAccepted: details.apply()
                }
            }
            Outcome {
                objectName: "detailsOutcome"
                width: parent.width
                controller: details.controller
                request: details.row ? details.row.request : null
            }
            CarButton {
                readonly property bool running: details.row !== null && details.row.running
                objectName: "apply"
                primary: !running
                text: running ? qsTr("Cancel") : qsTr("Apply")
                onClicked: running ? details.row.request.cancel() : details.apply()
            }
        }
    }
}
