// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Templates 2.15 as T

T.ScrollIndicator {
    implicitWidth: 8
    minimumSize: 0.1
    visible: size < 1
    contentItem: Rectangle {
        implicitWidth: 8
        radius: 4
        color: Theme.faint
    }
}
