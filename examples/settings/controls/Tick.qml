// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15

Item {
    property color color

    implicitWidth: 20
    implicitHeight: 18

    Rectangle { x: 0; y: 9; width: 10; height: 4; rotation: 45; color: parent.color; antialiasing: true }
    Rectangle { x: 5; y: 6; width: 17; height: 4; rotation: -52; color: parent.color; antialiasing: true }
}
