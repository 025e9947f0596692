// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Templates 2.15 as T

T.AbstractButton {
    id: button

    /*! Whether it is what one came for. */
    property bool primary: false

    implicitWidth: Math.max(Theme.target, label.implicitWidth + leftPadding + rightPadding)
    implicitHeight: Math.max(Theme.target, label.implicitHeight + 2 * Theme.gap)
    leftPadding: 24
    rightPadding: 24
    activeFocusOnTab: true
    focusPolicy: Qt.StrongFocus
    font.pixelSize: Theme.decisive
    Accessible.role: Accessible.Button
    Accessible.name: text
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    onVisibleChanged: Knob.leave(this)

    contentItem: CarText {
        id: label
        text: button.text
        font: button.font
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        color: !button.enabled ? Theme.faint : button.primary ? Theme.card : Theme.accent
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: Theme.radius
        color: button.primary && button.enabled ? Theme.accent : Theme.field
        border { color: button.enabled ? Theme.accent : Theme.faint; width: button.down ? 6 : 2 }

        FocusRing { visible: button.activeFocus }
    }
}
