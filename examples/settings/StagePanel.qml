// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "controls"

/*! What can happen to a unit, one click for each; the names are those of the scenario headunit. */
Rectangle {
    id: panel
    objectName: "stagePanel"

    property bool night: false
    property bool moving: false
    /*! What has come of the last click. */
    property string told: ""
    signal acted(string what, var keys)
    signal nightAsked()
    signal movingAsked()

    readonly property var acts: [
        {"title": "Wired network"},
        {"text": "link lost", "what": "link-lost", "keys": {"interface": "eth0"}},
        {"text": "link back", "what": "link-regained", "keys": {"interface": "eth0"}},
        {"text": "unplugged", "what": "vanish", "keys": {"interface": "eth0"}},
        {"text": "plugged in", "what": "appear", "keys": {"interface": "eth0"}},
        {"text": "lost its address", "what": "set", "keys": {"interface": "eth0",
            "attributes": {"connected": false, "ip_addresses": [], "ip_gateway": []}}},
        {"text": "next is refused", "what": "refuse",
            "keys": {"interface": "eth0", "err": 16, "errmsg": "busy", "times": 1}},
        {"text": "next is not answered", "what": "no-reply", "keys": {"interface": "eth0", "times": 1}},
        {"title": "Wi-Fi"},
        {"text": "wrong key, Home", "what": "wrong-key", "keys": {"ssid": "Home"}},
        {"text": "wrong key, Garage", "what": "wrong-key", "keys": {"ssid": "Garage"}},
        {"text": "roam there", "what": "roam", "keys": {"bssid": "02:00:00:00:20:02"}},
        {"text": "roam back", "what": "roam", "keys": {"bssid": "02:00:00:00:20:01"}},
        {"text": "dropped", "what": "dropped", "keys": {}},
        {"text": "Garage goes", "what": "out-of-range", "keys": {"bssid": "02:00:00:00:20:03"}},
        {"text": "Garage comes", "what": "in-range", "keys": {"bssid": "02:00:00:00:20:03"}},
        {"text": "radio off", "what": "radio-off", "keys": {}},
        {"text": "radio on", "what": "radio-on", "keys": {}},
        {"text": "next join is refused", "what": "refuse",
            "keys": {"message": "wnet_new", "err": 28, "errmsg": "no room", "times": 1}},
        {"text": "next join never ends", "what": "no-reply", "keys": {"message": "wnet_select", "times": 1}},
        {"title": "Hotspot"},
        {"text": "somebody starts it", "what": "hotspot-starts", "keys": {}},
        {"text": "it stops", "what": "hotspot-stops", "keys": {}},
        {"text": "next start is refused", "what": "refuse",
            "keys": {"message": "start", "err": 5, "errmsg": "no channel", "times": 1}},
        {"text": "next change is refused", "what": "refuse",
            "keys": {"message": "update_profile", "err": 8, "errmsg": "disk full", "times": 1}},
        {"title": "Daemons"},
        {"text": "networking dies", "what": "daemon-dies", "keys": {"daemon": "networking"}},
        {"text": "networking comes back", "what": "daemon-back", "keys": {"daemon": "networking"}},
        {"text": "Wi-Fi dies", "what": "daemon-dies", "keys": {"daemon": "wifi"}},
        {"text": "Wi-Fi comes back", "what": "daemon-back", "keys": {"daemon": "wifi"}},
        {"text": "hotspot dies", "what": "daemon-dies", "keys": {"daemon": "tethering"}},
        {"text": "hotspot comes back", "what": "daemon-back", "keys": {"daemon": "tethering"}},
        {"text": "next request kills", "what": "die", "keys": {"back_after": 4000, "times": 1}},
        {"text": "no more faults", "what": "faults-end", "keys": {}}
    ]

    color: Theme.field

    Flickable {
        id: flickable
        anchors { fill: parent; margins: 12; bottomMargin: answer.height + 24 }
        contentHeight: flow.height
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        T.ScrollIndicator.vertical: CarScrollIndicator {}

        Flow {
            id: flow
            width: parent.width - 12
            spacing: 8

            StageButton {
                objectName: "stageNight"
                text: panel.night ? "make it day" : "make it night"
                onClicked: panel.nightAsked()
            }
            StageButton {
                objectName: "stageMoving"
                text: panel.moving ? "stop the car" : "drive"
                onClicked: panel.movingAsked()
            }
            Repeater {
                model: panel.acts
                Loader {
                    id: entry
                    required property var modelData
                    width: modelData.title ? flow.width : implicitWidth
                    sourceComponent: modelData.title ? heading : act

                    Component {
                        id: heading
                        CarText {
                            topPadding: 8
                            font.pixelSize: 18
                            text: entry.modelData.title
                        }
                    }
                    Component {
                        id: act
                        StageButton {
                            objectName: "stage_" + entry.modelData.what + "_" + text
                            text: entry.modelData.text
                            onClicked: panel.acted(entry.modelData.what, entry.modelData.keys)
                        }
                    }
                }
            }
        }
    }
    CarText {
        id: answer
        objectName: "stageAnswer"
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 12 }
        wrapMode: Text.Wrap
        font.pixelSize: 18
        text: panel.told
    }
}
