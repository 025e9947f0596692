// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15

/*! A number that needs no typing. */
Column {
    id: stepper

    property string label: ""
    property string fault: ""
    property int value: 0
    property int from: 1
    property int to: 32
    signal chosen(int value)

    spacing: 8

    SupportText {
        width: parent.width
        text: stepper.label
    }
    Row {
        spacing: Theme.gap

        CarButton {
            objectName: stepper.objectName + "Less"
            text: "\u2212"
            // Stays where it is at the end, or the focus would be lost.
            onClicked: if (stepper.value > stepper.from) stepper.chosen(stepper.value - 1)
            Accessible.name: qsTr("Fewer")
            Accessible.description: stepper.label
        }
        CarText {
            objectName: stepper.objectName + "Value"
            width: 96
            height: Theme.target
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            text: stepper.value
            Accessible.name: stepper.label + ": " + text
        }
        CarButton {
            objectName: stepper.objectName + "More"
            text: "+"
            onClicked: if (stepper.value < stepper.to) stepper.chosen(stepper.value + 1)
            Accessible.name: qsTr("More")
            Accessible.description: stepper.label
        }
    }
    Notice {
        width: parent.width
        text: stepper.fault
    }
}
