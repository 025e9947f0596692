// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Templates 2.15 as T

/*! After a dialog, a window of this type gives the focus back; a plain one does not. */
T.ApplicationWindow {
    id: window

    property bool night: false
    property bool moving: false
    property size screenSize: Qt.size(1280, 720)
    /*! What a unit beside the screen plays; empty when there is a real one. */
    property string scenario: ""

    readonly property bool busy: content.item !== null && content.item.idle === false
    property bool leaving: false

    width: screenSize.width + (scenario === "" ? 0 : 420)
    height: screenSize.height
    visible: true
    title: qsTr("Settings")
    onClosing: {
        leaving = busy;
        close.accepted = !busy;
    }
    onBusyChanged: if (leaving) close()

    Loader {
        id: content
        anchors.fill: parent
        focus: true
        Component.onCompleted: {
            if (window.scenario === "")
                setSource("SettingsScreen.qml", {"night": window.night, "moving": window.moving});
            else
                setSource("Stage.qml", {"night": window.night, "moving": window.moving, "scenario": window.scenario});
        }
    }
}
