// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0
import "../controls"

/*! The networks of the car, one row for each; a click shows one alone. */
FocusScope {
    id: page

    property InterfaceController controller: null
    property string lock: ""
    /*! What was asked for an interface that is not there any more. */
    property NetworkRequest orphan: null

    function open(row) {
        details.show(row);
        list.visible = false;
    }

    function back() {
        const row = details.row;
        list.visible = true;
        details.show(null);
        if (row)
            row.takeFocus();
    }

    Scroller {
        id: list
        anchors.fill: parent

        CarText {
            width: parent.width
            leftPadding: Theme.gap
            text: qsTr("Networks of the car")
        }
        Away {
            objectName: "networksAway"
            width: parent.width
            controller: page.controller
        }
        Outcome {
            objectName: "orphanOutcome"
            width: parent.width
            controller: page.controller
            request: page.orphan
        }
        Repeater {
            model: page.controller.interfaces
            InterfaceRow {
                width: parent.width
                controller: page.controller
                onOpened: page.open(this)
                Component.onDestruction: if (request) page.orphan = request
            }
        }
    }
    NetworkDetails {
        id: details
        anchors.fill: parent
        visible: !list.visible
        controller: page.controller
        lock: page.lock
        onLeft: page.back()
    }
}
