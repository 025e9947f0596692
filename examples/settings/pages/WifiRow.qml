// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Morvek.Network 1.0
import "../controls"

/*! A network in range. */
T.AbstractButton {
    id: row

    required property int index
    required property string ssid
    required property string displayName
    required property int bars
    required property string security
    required property bool isProtected
    required property bool joinable
    required property bool needsPasskey
    required property bool inUse
    required property bool joining
    required property bool openTwin
    property WifiController controller: null
    /*! What has come of joining or leaving it. */
    property NetworkRequest outcome: null
    readonly property string stateText: joining ? qsTr("Connecting …") : inUse ? qsTr("Connected") : ""

    objectName: "network_" + ssid
    implicitHeight: Math.max(Theme.target, column.implicitHeight + 2 * Theme.gap)
    focusPolicy: Qt.ClickFocus // the list goes from row to row
    text: displayName
    Accessible.role: Accessible.Button
    Accessible.name: displayName
    Accessible.description: [stateText, security, qsTr("Signal %1 of 4").arg(bars), sentence.text]
        .filter(function(part) { return part !== ""; }).join(", ")
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: Theme.radius
        color: row.down ? Theme.field : Theme.card
        FocusRing { visible: row.activeFocus; within: true }
    }
    contentItem: Item {
        SignalBars {
            id: bars
            anchors { left: parent.left; leftMargin: Theme.gap; verticalCenter: parent.verticalCenter }
            bars: row.bars
        }
        Column {
            id: column
            anchors {
                left: bars.right; right: mark.visible ? mark.left : parent.right; margins: Theme.gap
                verticalCenter: parent.verticalCenter
            }
            CarText {
                width: parent.width
                wrapMode: Text.WrapAnywhere
                maximumLineCount: 4
                elide: Text.ElideRight
                text: row.displayName
                Accessible.ignored: true
            }
            SupportText {
                width: parent.width
                text: row.stateText === "" ? row.security : row.stateText + " · " + row.security
                Accessible.ignored: true
            }
            Outcome {
                id: sentence
                objectName: "outcome_" + row.ssid
                width: parent.width
                controller: row.controller
                request: row.outcome
            }
        }
        StateMark {
            id: mark
            anchors { right: parent.right; rightMargin: Theme.gap; verticalCenter: parent.verticalCenter }
            visible: row.inUse || row.joining
            kind: row.joining ? StateMark.Busy : StateMark.Good
        }
    }
}
