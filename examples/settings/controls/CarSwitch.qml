// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Templates 2.15 as T

/*! A switch that shows what is, not what was asked for: a click only asks. */
T.AbstractButton {
    id: control

    property string stateText: ""
    property bool on: false
    property bool busy: false

    implicitHeight: Math.max(Theme.target, words.implicitHeight + 2 * Theme.gap)
    implicitWidth: words.implicitWidth + track.width + 3 * Theme.gap
    activeFocusOnTab: true
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.description: stateText
    Accessible.checkable: true
    Accessible.checked: on
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    onVisibleChanged: Knob.leave(this)

    background: Rectangle {
        radius: Theme.radius
        color: control.down ? Theme.field : Theme.card

        FocusRing { visible: control.activeFocus; within: true }
    }
    contentItem: Item {
        Column {
            id: words
            anchors {
                left: parent.left; right: track.left; margins: Theme.gap; verticalCenter: parent.verticalCenter
            }
            CarText {
                width: parent.width
                text: control.text
                Accessible.ignored: true
            }
            SupportText {
                width: parent.width
                visible: text !== ""
                text: control.stateText
                Accessible.ignored: true
            }
        }
        Rectangle {
            id: track
            anchors { right: parent.right; rightMargin: Theme.gap; verticalCenter: parent.verticalCenter }
            width: Math.max(120, onWord.implicitWidth + 68, offWord.implicitWidth + 68)
            height: 52
            radius: height / 2
            color: control.on ? Theme.accent : Theme.field
            border { color: control.on ? Theme.accent : Theme.faint; width: 3 }

            SupportText {
                id: onWord
                anchors { left: parent.left; leftMargin: 16; verticalCenter: parent.verticalCenter }
                visible: control.on
                text: qsTr("On")
                color: Theme.card
                Accessible.ignored: true
            }
            SupportText {
                id: offWord
                anchors { right: parent.right; rightMargin: 16; verticalCenter: parent.verticalCenter }
                visible: !control.on
                text: qsTr("Off")
                Accessible.ignored: true
            }
            Rectangle { // the knob
                readonly property real way: parent.width - width - 16
                anchors.verticalCenter: parent.verticalCenter
                x: 8 + (control.busy ? way / 2 : control.on !== control.mirrored ? way : 0)
                width: 36
                height: 36
                radius: 18
                color: Theme.card

                Tick {
                    anchors.centerIn: parent
                    visible: control.on && !control.busy
                    color: Theme.accent
                }
                Rectangle { // a dash
                    anchors.centerIn: parent
                    visible: !control.on && !control.busy
                    width: 14
                    height: 4
                    color: Theme.faint
                }
                Row {
                    anchors.centerIn: parent
                    visible: control.busy
                    spacing: 3
                    Repeater {
                        model: 3
                        Rectangle { width: 5; height: 5; radius: 2; color: Theme.accent }
                    }
                }
            }
        }
    }
}
