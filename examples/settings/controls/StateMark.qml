// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15

/*! A small drawing that tells a state without its colour. */
Rectangle {
    id: mark

    enum Kind { Good, Bad, Off, Busy }
    property int kind: StateMark.Good

    implicitWidth: 36
    implicitHeight: 36
    radius: width / 2
    color: kind === StateMark.Good ? Theme.good : kind === StateMark.Bad ? Theme.bad : "transparent"
    border { color: kind === StateMark.Off ? Theme.faint : kind === StateMark.Busy ? Theme.accent : color; width: 3 }
    Accessible.ignored: true

    Tick {
        anchors.centerIn: parent
        visible: mark.kind === StateMark.Good
        color: Theme.card
    }
    Rectangle { // a dash
        anchors.centerIn: parent
        visible: mark.kind === StateMark.Off
        width: 14
        height: 4
        color: Theme.faint
    }
    Column { // an exclamation mark
        anchors.centerIn: parent
        visible: mark.kind === StateMark.Bad
        spacing: 3
        Rectangle { width: 4; height: 13; color: Theme.card }
        Rectangle { width: 4; height: 4; color: Theme.card }
    }
    Row {
        anchors.centerIn: parent
        visible: mark.kind === StateMark.Busy
        spacing: 3
        Repeater {
            model: 3
            Rectangle { width: 5; height: 5; radius: 2; color: Theme.accent }
        }
    }
}
