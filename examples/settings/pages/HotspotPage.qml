// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0
import "../controls"

/*! The car's own Wi-Fi: its switch, and its profile. */
FocusScope {
    id: page

    property HotspotController controller: null
    property string lock: ""
    readonly property HotspotForm form: controller.form
    property NetworkRequest switching: null
    property NetworkRequest applying: null
    property NetworkRequest fetching: null
    readonly property bool busy: applying !== null && applying.running
    /*! What was asked to be seen; empty otherwise. */
    property string revealed: ""

    function apply() {
        revealed = "";
        if (form.valid)
            applying = controller.apply();
    }

    function revert() {
        form.revert();
        showProfile();
    }

    /*! What is typed is not a binding, or it would be lost with the first letter. */
    function showProfile() {
        if (nameField.text !== form.name)
            nameField.text = form.name;
        if (!form.passphraseEdited)
            passphrase.text = "";
    }

    onVisibleChanged: revealed = ""
    Component.onCompleted: showProfile()

    Connections {
        target: page.form
        function onChanged() { page.showProfile(); }
    }
    Connections { // another one, perhaps
        target: page.controller
        function onProfileChanged() { page.revealed = ""; }
    }

    Scroller {
        anchors.fill: parent

        CarSwitch {
            objectName: "hotspotSwitch"
            width: parent.width
            text: qsTr("Hotspot")
            stateText: page.controller.stateText
            on: page.controller.on
            busy: page.controller.state === HotspotController.SwitchingOn
                || page.controller.state === HotspotController.SwitchingOff
            onOnChanged: if (page.switching && !page.switching.running) page.switching = null // nothing to be told any more
            onClicked: page.switching = page.controller.setOn(
                           page.controller.state === HotspotController.SwitchingOn ? false : !on)
        }
        Outcome {
            objectName: "switchOutcome"
            width: parent.width
            controller: page.controller
            request: page.switching
        }
        Away {
            objectName: "hotspotAway"
            width: parent.width
            controller: page.controller
        }
        Outcome {
            objectName: "fetchOutcome"
            width: parent.width
            controller: page.controller
            request: page.controller.profileKnown ? null : page.fetching
        }
        CarButton {
            objectName: "fetch"
            visible: page.controller.availability === NetworkController.Ready && !page.controller.profileKnown
            text: qsTr("Read the settings")
            onClicked: page.fetching = page.controller.fetch()
        }
        Column {
            width: parent.width
            visible: page.controller.profileKnown
            spacing: Theme.gap

            CarField {
                id: nameField
                objectName: "hotspotName"
                width: parent.width
                label: qsTr("Name")
                lock: page.lock
                fault: page.form.nameText
                onEdited: page.form.name = text
            }
            CarField {
                id: passphrase
                objectName: "passphrase"
                width: parent.width
                visible: page.form.security !== HotspotForm.Open
                label: qsTr("New passphrase; empty keeps it")
                secret: true
                maximumLength: 64
                hints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
                lock: page.lock
                fault: page.form.passphraseText
                onEdited: page.form.setPassphrase(text)
            }
            CarButton {
                objectName: "reveal"
                visible: passphrase.visible
                text: page.revealed === "" ? qsTr("Show the present passphrase") : qsTr("Hide the passphrase")
                onClicked: page.revealed = page.revealed === "" ? page.controller.reveal() : ""
            }
            CarText {
                objectName: "revealed"
                width: parent.width
                visible: text !== ""
                wrapMode: Text.WrapAnywhere
                text: page.revealed
            }
            CarChoice {
                objectName: "security"
                width: parent.width
                label: qsTr("Protection")
                texts: [qsTr("WPA2"), qsTr("WPA and WPA2"), qsTr("WPA"), qsTr("None, open")]
                values: [HotspotForm.Wpa2, HotspotForm.WpaAndWpa2, HotspotForm.Wpa, HotspotForm.Open]
                current: page.form.security
                fault: page.form.securityText
                onChosen: page.form.security = value
            }
            CarChoice {
                objectName: "band"
                width: parent.width
                label: qsTr("Band")
                texts: [qsTr("2.4 GHz"), qsTr("5 GHz")]
                values: [HotspotForm.Band2_4GHz, HotspotForm.Band5GHz]
                current: page.form.band
                onChosen: page.form.band = value
            }
            CarStepper {
                objectName: "clients"
                width: parent.width
                label: qsTr("Clients at most")
                value: page.form.maxClients
                fault: page.form.maxClientsText
                onChosen: page.form.maxClients = value
            }
            CarSwitch {
                objectName: "blocked"
                width: parent.width
                text: qsTr("Block connections")
                on: page.form.blockConnections
                onClicked: page.form.blockConnections = !on
            }
            Outcome {
                objectName: "applyOutcome"
                width: parent.width
                controller: page.controller
                request: page.applying
            }
            Flow {
                width: parent.width
                visible: page.form.edited || page.busy
                spacing: Theme.gap

                CarButton {
                    objectName: "hotspotApply"
                    primary: !page.busy
                    text: page.busy ? qsTr("Cancel") : qsTr("Apply")
                    onClicked: page.busy ? page.applying.cancel() : page.apply()
                }
                CarButton {
                    objectName: "hotspotRevert"
                    visible: !page.busy
                    text: qsTr("Revert")
                    onClicked: page.revert()
                }
            }
        }
    }
}
