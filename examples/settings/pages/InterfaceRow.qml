// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Morvek.Network 1.0
import "../controls"

/*! A network of the car, how it is, and what has come of what was asked for it. */
Rectangle {
    id: row

    required property string name
    required property string displayName
    required property string typeText
    required property var model
    required property bool preferred
    readonly property int condition: model.interfaceState
    property InterfaceController controller: null
    /*! What was asked for it last. */
    property NetworkRequest request: null
    readonly property bool running: request !== null && request.running
    signal opened()

    function takeFocus() {
        button.forceActiveFocus(Qt.TabFocusReason);
    }

    implicitHeight: column.implicitHeight
    radius: Theme.radius
    color: Theme.card

    Column {
        id: column
        width: parent.width
        bottomPadding: outcome.visible || action.visible ? Theme.gap : 0
        spacing: Theme.gap

        T.AbstractButton {
            id: button

            readonly property string stateText: row.preferred
                ? qsTr("%1 Preferred.").arg(row.model.stateText) : row.model.stateText

            objectName: "interface_" + row.name
            width: parent.width
            height: Math.max(Theme.target, words.implicitHeight + 2 * Theme.gap)
            activeFocusOnTab: true
            focusPolicy: Qt.StrongFocus
            text: row.typeText
            Accessible.role: Accessible.Button
            Accessible.name: row.typeText + ", " + row.displayName
            Accessible.description: button.stateText
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()
            onVisibleChanged: Knob.leave(this)
            onClicked: row.opened()

            background: Rectangle {
                radius: Theme.radius
                color: button.down ? Theme.field : Theme.card
                FocusRing { visible: button.activeFocus; within: true }
            }
            contentItem: Item {
                StateMark {
                    id: mark
                    anchors { left: parent.left; leftMargin: Theme.gap; verticalCenter: parent.verticalCenter }
                    kind: row.condition === InterfaceModel.Connected ? StateMark.Good
                        : row.condition === InterfaceModel.Configuring || row.condition === InterfaceModel.Obtaining
                          ? StateMark.Busy
                        : row.condition === InterfaceModel.WithoutAddress ? StateMark.Bad : StateMark.Off
                }
                Column {
                    id: words
                    anchors {
                        left: mark.right; right: chevron.left; margins: Theme.gap
                        verticalCenter: parent.verticalCenter
                    }
                    CarText {
                        width: parent.width
                        text: row.typeText + " · " + row.displayName
                        Accessible.ignored: true
                    }
                    SupportText {
                        width: parent.width
                        text: button.stateText
                        Accessible.ignored: true
                    }
                }
                Chevron {
                    id: chevron
                    anchors { right: parent.right; rightMargin: Theme.gap; verticalCenter: parent.verticalCenter }
                }
            }
        }
        Outcome {
            id: outcome
            objectName: "outcome_" + row.name
            x: Theme.gap
            width: parent.width - 2 * Theme.gap
            controller: row.controller
            request: row.request
        }
        CarButton {
            id: action
            objectName: (row.running ? "cancel_" : "repair_") + row.name
            anchors { right: parent.right; rightMargin: Theme.gap }
            visible: row.running || row.condition === InterfaceModel.WithoutAddress
            text: row.running ? qsTr("Cancel") : qsTr("Ask for an address")
            onClicked: {
                if (row.running)
                    row.request.cancel();
                else
                    row.request = row.controller.repair(row.name);
            }
        }
    }
}
