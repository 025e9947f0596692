// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15

/*! Shows where the focus is: around its parent, or within it. */
Rectangle {
    property bool within: false

    anchors.fill: parent
    anchors.margins: within ? 0 : -2 * Theme.ring
    visible: parent.activeFocus
    color: "transparent"
    radius: within ? Theme.radius : Theme.radius + 2 * Theme.ring
    border { color: Theme.ink; width: Theme.ring }
}
