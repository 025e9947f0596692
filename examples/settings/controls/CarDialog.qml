// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Window 2.15
import QtQuick.Templates 2.15 as T

/*! A dialog over the whole screen's middle, which gives way to a keyboard. */
T.Popup {
    id: dialog

    default property alias content: scroller.content
    /*! Buttons, which stay in sight when the rest is scrolled. */
    property alias footer: buttons.data
    property string title: ""
    /*! How much of the height a keyboard takes away. */
    property real keyboardHeight: 0
    readonly property real room: parent ? parent.height - keyboardHeight - 2 * Theme.gap : 0

    parent: T.Overlay.overlay
    x: parent ? (parent.width - width) / 2 : 0
    y: Theme.gap + (room - height) / 2
    width: parent ? Math.min(parent.width - 2 * Theme.gap, 760) : 0
    height: Math.min(room, scroller.contentHeight + foot.height)
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside

    T.Overlay.modal: Rectangle { color: "#b0000000" }
    background: Rectangle {
        radius: Theme.radius
        color: Theme.card
        border { color: Theme.faint; width: 2 }
    }
    contentItem: FocusScope {
        focus: true
        LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
        LayoutMirroring.childrenInherit: true
        Keys.onPressed: Knob.turn(event, Window.activeFocusItem)
        Accessible.role: Accessible.Dialog
        Accessible.name: dialog.title

        Scroller {
            id: scroller
            anchors { left: parent.left; right: parent.right; top: parent.top; bottom: foot.top }
            margin: 24
        }
        Item {
            id: foot
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
            height: buttons.height + 24 + Theme.gap / 2

            Flow {
                id: buttons
                anchors {
                    left: parent.left; right: parent.right; top: parent.top; margins: 24; topMargin: Theme.gap / 2
                }
                spacing: Theme.gap
            }
        }
    }
}
