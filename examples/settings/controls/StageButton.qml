// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15

/*! For the panel of a desk, which is used with a mouse: the knob passes it by. */
CarButton {
    implicitHeight: 40
    leftPadding: 12
    rightPadding: 12
    activeFocusOnTab: false
    focusPolicy: Qt.NoFocus
    font.pixelSize: 18
}
