// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0
import "../controls"

/*! What can be done with a Wi-Fi network. It stays open until that has come true. */
CarDialog {
    id: dialog

    property WifiController controller: null
    property string lock: ""
    property NetworkRequest joining: null
    property NetworkRequest leaving: null
    property string ssid: ""
    property string displayName: ""
    property string security: ""
    property bool isProtected: true
    property bool joinable: false
    property bool needsPasskey: false
    property bool openTwin: false
    readonly property bool inUse: controller.connected && controller.ssid === ssid
    readonly property NetworkRequest join: joining && joining.subject === ssid ? joining : null
    readonly property NetworkRequest leave: leaving && leaving.subject === ssid ? leaving : null
    readonly property NetworkRequest current: leave && leave.running ? leave : join && join.running ? join : null
    readonly property bool running: current !== null
    signal joinAsked(string ssid, string passkey)
    signal leaveAsked()

    function show(row) {
        ssid = row.ssid;
        displayName = row.displayName;
        security = row.security;
        isProtected = row.isProtected;
        joinable = row.joinable;
        needsPasskey = row.needsPasskey;
        openTwin = row.openTwin;
        open();
        (passkey.visible ? passkey.input : action.visible ? action : shut).forceActiveFocus(Qt.TabFocusReason);
    }

    function act() {
        if (running)
            current.cancel();
        else if (inUse)
            leaveAsked();
        else
            joinAsked(ssid, needsPasskey ? passkey.text : "");
    }

    title: displayName
    onClosed: {
        passkey.text = "";
        reveal.on = false;
    }

    Connections {
        target: dialog.join
        function onFinished() { if (dialog.join.done) dialog.close(); }
    }
    Connections {
        target: dialog.leave
        function onFinished() { if (dialog.leave.done) dialog.close(); }
    }

    footer: [
        CarButton {
            id: action
            objectName: "dialogAction"
            visible: dialog.running || dialog.inUse || dialog.joinable
            primary: true
            text: dialog.running ? qsTr("Cancel") : dialog.inUse ? qsTr("Disconnect") : qsTr("Connect")
            onClicked: dialog.act()
        },
        CarButton {
            id: shut
            objectName: "dialogClose"
            text: qsTr("Close")
            onClicked: dialog.close()
        }
    ]

    CarText {
        objectName: "dialogName"
        width: parent.width
        wrapMode: Text.WrapAnywhere
        maximumLineCount: 4
        elide: Text.ElideRight
        text: dialog.displayName
    }
    SupportText {
        width: parent.width
        text: dialog.running ? dialog.current === dialog.leave ? qsTr("Disconnecting …") : qsTr("Connecting …")
            : dialog.inUse ? qsTr("Connected · %1").arg(dialog.security)
            : dialog.security
    }
    Outcome {
        objectName: "dialogOutcome"
        width: parent.width
        controller: dialog.controller
        request: dialog.inUse ? dialog.leave : dialog.join
    }
    Away {
        width: parent.width
        controller: dialog.controller
    }
    Notice {
        objectName: "unjoinable"
        width: parent.width
        text: dialog.joinable || dialog.inUse ? ""
            : dialog.ssid.includes("\ufffd") ? qsTr("The name of this network cannot be read, so it cannot be joined.")
            : qsTr("This car cannot join a network with this protection.")
    }
    Notice {
        objectName: "openNote"
        width: parent.width
        kind: StateMark.Off
        text: dialog.isProtected ? "" : qsTr("This network is open: others can read what you send.")
    }
    Notice {
        objectName: "twinNote"
        width: parent.width
        kind: StateMark.Off
        text: dialog.openTwin ? qsTr("An open network has the same name. It will not be used.") : ""
    }
    CarField {
        id: passkey
        objectName: "passkey"
        width: parent.width
        visible: dialog.joinable && dialog.needsPasskey && !dialog.inUse
        label: qsTr("Passkey")
        secret: !reveal.on
        maximumLength: 64
        lock: dialog.lock
        hints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
        onAccepted: if (!dialog.running) dialog.act()
    }
    CarSwitch {
        id: reveal
        objectName: "showPasskey"
        width: parent.width
        visible: passkey.visible
        text: qsTr("Show the passkey")
        onClicked: on = !on
    }
}
