// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15

Row {
    property int bars: 0

    spacing: 4
    height: 36
    Accessible.ignored: true

    Repeater {
        model: 4
        Rectangle {
            required property int index
            readonly property bool filled: index < bars

            anchors.bottom: parent.bottom
            width: 8
            height: 12 + 8 * index
            color: filled ? Theme.ink : "transparent"
            border { color: Theme.faint; width: 2 }
        }
    }
}
