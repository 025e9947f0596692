// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.TestKit 1.0
import "controls"

/*! The screen with a unit of its own, and beside it a panel that acts on that: for a developer's desk. */
FocusScope {
    id: stage

    property bool night: false
    property bool moving: false
    property string scenario: ""

    Component.onCompleted: {
        screen.active = unit.start(scenario);
        panel.told = screen.active ? scenario + " is played below " + unit.root : unit.errorString();
    }

    TestUnit {
        id: unit
        held: false
    }
    Loader { // not before there is a unit that it finds
        id: screen
        anchors { left: parent.left; right: panel.left; top: parent.top; bottom: parent.bottom }
        focus: true
        active: false
        sourceComponent: SettingsScreen {
            focus: true
            night: stage.night
            moving: stage.moving
        }
    }
    StagePanel {
        id: panel
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        width: 420
        night: stage.night
        moving: stage.moving
        onActed: told = unit.act(what, keys) ? "Done." : unit.errorString()
        onNightAsked: stage.night = !stage.night
        onMovingAsked: stage.moving = !stage.moving
    }
}
