// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Window 2.15
import Morvek.Network 1.0
import "controls"
import "pages"

/*! The settings: the page, and where to choose it, at the side of a wide screen and at the foot of a narrow one. */
FocusScope {
    id: screen
    objectName: "settings"

    property bool night: false
    /*! Whether the car moves: nothing can be typed then. */
    property bool moving: false
    /*! How much of its height the platform's keyboard covers. */
    property real keyboardHeight: Qt.inputMethod.visible ? Qt.inputMethod.keyboardRectangle.height : 0
    property int page: SettingsScreen.Wifi
    /*! False while an interface would be left without addresses if this ended. */
    readonly property alias idle: shared.idle
    readonly property bool wide: width > height
    readonly property string lock: moving ? qsTr("Typing is locked while the car moves.") : ""

    enum Page { Networks, Wifi, Hotspot }

    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    Keys.onPressed: Knob.turn(event, Window.activeFocusItem)

    Binding { target: Theme; property: "night"; value: screen.night }
    NetworkServices { id: shared }
    InterfaceController { id: interfaces; services: shared }
    WifiController { id: wifi; services: shared }
    HotspotController { id: hotspot; services: shared }

    Rectangle {
        anchors.fill: parent
        color: Theme.page
    }
    Grid {
        id: places
        readonly property real share: (screen.width - 2 * Theme.gap) / 3 - Theme.gap / 2

        anchors { left: parent.left; leftMargin: Theme.gap }
        y: screen.wide ? Theme.gap : screen.height - height - Theme.gap
        columns: screen.wide ? 1 : 3
        spacing: Theme.gap / 2

        Repeater {
            model: [qsTr("Networks"), qsTr("Wi-Fi"), qsTr("Hotspot")]
            PlaceButton {
                required property int index
                required property string modelData
                objectName: "place" + index
                width: screen.wide ? 204 : places.share
                text: modelData
                chosen: screen.page === index
                focus: index === SettingsScreen.Wifi
                onClicked: screen.page = index
            }
        }
    }
    Item {
        id: room
        anchors {
            left: screen.wide ? places.right : parent.left
            right: parent.right
            top: parent.top
            bottom: parent.bottom
            bottomMargin: Math.max(screen.keyboardHeight, screen.wide ? 0 : places.height + 2 * Theme.gap)
        }
        NetworksPage {
            objectName: "networksPage"
            anchors.fill: parent
            visible: screen.page === SettingsScreen.Networks
            controller: interfaces
            lock: screen.lock
        }
        WifiPage {
            objectName: "wifiPage"
            anchors.fill: parent
            visible: screen.page === SettingsScreen.Wifi
            controller: wifi
            lock: screen.lock
            keyboardHeight: screen.keyboardHeight
        }
        HotspotPage {
            objectName: "hotspotPage"
            anchors.fill: parent
            visible: screen.page === SettingsScreen.Hotspot
            controller: hotspot
            lock: screen.lock
        }
    }
}
