// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Templates 2.15 as T

/*! One of the places of the screen. */
T.AbstractButton {
    id: place

    property bool chosen: false

    implicitHeight: 96
    activeFocusOnTab: true
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.PageTab
    Accessible.name: text
    Accessible.selected: chosen
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: Theme.radius
        color: place.down || place.chosen ? Theme.field : Theme.page

        Rectangle { // the one that is shown has a bar beside its name
            anchors { left: parent.left; verticalCenter: parent.verticalCenter }
            visible: place.chosen
            width: 8
            height: parent.height - 2 * Theme.radius
            radius: 4
            color: Theme.accent
        }
        FocusRing { visible: place.activeFocus; within: true }
    }
    contentItem: CarText {
        leftPadding: Theme.gap
        rightPadding: Theme.gap
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.NoWrap
        text: place.text
        color: place.chosen ? Theme.ink : Theme.faint
        Accessible.ignored: true
    }
}
