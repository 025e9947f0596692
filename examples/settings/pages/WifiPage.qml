// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Window 2.15
import QtQuick.Templates 2.15 as T
import Morvek.Network 1.0
import "../controls"

/*! Wi-Fi: its switch, and the networks in range. */
FocusScope {
    id: page

    property WifiController controller: null
    property string lock: ""
    property real keyboardHeight: 0
    property NetworkRequest powering: null
    property NetworkRequest joining: null
    property NetworkRequest leaving: null
    /*! Counts what changes the rows, as what is asked of them is no property. */
    property int changes: 0
    readonly property bool mirrored: LayoutMirroring.enabled
    /*! The row below a finger. */
    property WifiRow touched: null
    /*! What had the focus before: the list is entered at the end that is next to it. */
    property Item former: null

    Window.onActiveFocusItemChanged: {
        const byKey = list.activeFocus && list.currentItem !== null && list.currentItem.visualFocus;
        if (byKey && former === power)
            list.go(0);
        else if (byKey && former instanceof PlaceButton)
            list.go(list.count - 1);
        former = Window.activeFocusItem;
    }

    /*! Of a network that is in use, nobody has to know why it could not be joined; of another one, not why it was not left. */
    function outcomeOf(ssid, inUse) {
        const request = inUse ? leaving : joining;
        return request && request.subject === ssid && !request.running && !request.done ? request : null;
    }

    function inSight(ssid) {
        return changes >= 0 && controller.networks.rowOf(ssid) >= 0;
    }

    function takeFocus() {
        (list.visible ? list : power).forceActiveFocus(Qt.PopupFocusReason);
    }

    Binding {
        target: page.controller
        property: "looking"
        value: page.visible
    }
    Binding { // a list that is touched stands still
        target: page.controller.networks
        property: "held"
        value: page.touched !== null || list.moving
    }
    Connections {
        target: page.controller.networks
        function onRowsInserted() { page.changes += 1; }
        function onRowsRemoved() { page.changes += 1; }
    }

    Column {
        id: top
        x: Theme.gap
        y: Theme.gap
        width: parent.width - 2 * Theme.gap
        spacing: Theme.gap

        CarSwitch {
            id: power
            objectName: "wifiSwitch"
            width: parent.width
            text: qsTr("Wi-Fi")
            stateText: page.controller.stateText
            on: page.controller.powered
            busy: page.powering !== null && page.powering.running
            onOnChanged: if (page.powering && !page.powering.running) page.powering = null // nothing to be told any more
            onClicked: page.powering = page.controller.setPowered(
                           page.controller.state === WifiController.SwitchingOn ? false : !on)
        }
        Outcome {
            objectName: "powerOutcome"
            width: parent.width
            controller: page.controller
            request: page.powering
        }
        Away {
            objectName: "wifiAway"
            width: parent.width
            controller: page.controller
        }
        Outcome { // of a network that has no row any more
            objectName: "joinOutcome"
            width: parent.width
            controller: page.controller
            request: page.joining && !page.inSight(page.joining.subject) ? page.joining : null
        }
        SupportText {
            objectName: "emptyText"
            width: parent.width
            visible: page.controller.powered && list.count === 0
                && page.controller.availability !== NetworkController.Waiting
            text: page.controller.scanning ? qsTr("Looking for networks …") : qsTr("No networks in range.")
        }
    }
    ListView {
        id: list
        objectName: "wifiList"
        anchors { top: top.bottom; topMargin: Theme.gap; bottom: parent.bottom }
        x: Theme.gap
        width: parent.width - 2 * Theme.gap
        visible: count > 0
        clip: true
        spacing: Theme.ring
        bottomMargin: Theme.gap
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        highlightFollowsCurrentItem: false // it is scrolled by keys and fingers, and by nothing else
        model: page.controller.networks
        T.ScrollIndicator.vertical: CarScrollIndicator {
            parent: page
            x: page.mirrored ? 4 : list.x + list.width + 4
            y: list.y
            height: list.height
        }
        onVisibleChanged: Knob.leave(this)
        function go(index) {
            currentIndex = index;
            positionViewAtIndex(index, ListView.Contain);
        }

        // Row by row: Tab and the knob alike.
        Keys.onPressed: {
            const onwards = event.key === Qt.Key_Right || event.key === Qt.Key_Down || event.key === Qt.Key_Tab;
            if (!onwards && event.key !== Qt.Key_Left && event.key !== Qt.Key_Up && event.key !== Qt.Key_Backtab)
                return;
            event.accepted = true;
            if (onwards ? currentIndex < count - 1 : currentIndex > 0)
                go(currentIndex + (onwards ? 1 : -1));
            else
                nextItemInFocusChain(onwards).forceActiveFocus(onwards ? Qt.TabFocusReason : Qt.BacktabFocusReason);
        }

        delegate: WifiRow {
            controller: page.controller
            width: list.width
            outcome: page.changes >= 0 ? page.outcomeOf(ssid, inUse) : null
            onPressedChanged: {
                if (pressed) {
                    page.touched = this;
                    list.currentIndex = index;
                } else {
                    page.touched = null;
                }
            }
            onClicked: dialog.show(this)
        }
    }
    NetworkDialog {
        id: dialog
        controller: page.controller
        lock: page.lock
        keyboardHeight: page.keyboardHeight
        joining: page.joining
        leaving: page.leaving
        // Of one network, what was asked last is told.
        onJoinAsked: {
            if (page.leaving && page.leaving.subject === ssid)
                page.leaving = null;
            page.joining = page.controller.join(ssid, passkey);
        }
        onLeaveAsked: {
            if (page.joining && page.joining.subject === dialog.ssid)
                page.joining = null;
            page.leaving = page.controller.leave();
        }
        onClosed: Qt.callLater(page.takeFocus) // there may be no row any more
    }
}
