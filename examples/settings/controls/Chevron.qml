// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15

/*! An arrow that points to where it goes on, or back. */
Item {
    id: chevron

    property bool back: false
    property color color: Theme.faint

    implicitWidth: 20
    implicitHeight: 32
    transform: Scale {
        origin.x: chevron.width / 2
        xScale: chevron.back !== chevron.LayoutMirroring.enabled ? -1 : 1
    }
    Rectangle { x: 0; y: 8; width: 22; height: 4; rotation: 45; color: chevron.color; antialiasing: true }
    Rectangle { x: 0; y: 21; width: 22; height: 4; rotation: -45; color: chevron.color; antialiasing: true }
}
