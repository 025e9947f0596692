// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Templates 2.15 as T

/*! One of a few, all of them in sight. A click only asks; `current` shows what is. */
Column {
    id: choice

    property string label: ""
    property string fault: ""
    /*! Texts, and the values that they stand for. */
    property var texts: []
    property var values: []
    property int current: -1
    signal chosen(int value)

    spacing: 8

    SupportText {
        width: parent.width
        visible: text !== ""
        text: choice.label
    }
    Flow {
        width: parent.width
        spacing: Theme.gap

        Repeater {
            model: choice.texts
            T.AbstractButton {
                id: option
                required property int index
                required property string modelData
                readonly property bool selected: choice.values[index] === choice.current

                objectName: choice.objectName + choice.values[index]
                text: modelData
                width: Math.min(words.implicitWidth + 100, choice.width)
                height: Math.max(Theme.target, words.implicitHeight + Theme.gap)
                activeFocusOnTab: true
                focusPolicy: Qt.StrongFocus
                Accessible.role: Accessible.RadioButton
                Accessible.name: text
                Accessible.description: choice.label
                Accessible.checkable: true
                Accessible.checked: selected
                Keys.onReturnPressed: clicked()
                Keys.onEnterPressed: clicked()
                onVisibleChanged: Knob.leave(this)
                onClicked: choice.chosen(choice.values[index])

                background: Rectangle {
                    radius: Theme.radius
                    color: Theme.field
                    border {
                        color: option.selected ? Theme.accent : Theme.faint
                        width: option.down ? 6 : option.selected ? 4 : 2
                    }
                    FocusRing { visible: option.activeFocus }
                }
                contentItem: Item {
                    Rectangle {
                        id: dot
                        anchors { left: parent.left; leftMargin: Theme.gap; verticalCenter: parent.verticalCenter }
                        width: 36
                        height: 36
                        radius: 18
                        color: "transparent"
                        border { color: option.selected ? Theme.accent : Theme.faint; width: 3 }
                        Rectangle {
                            anchors.centerIn: parent
                            visible: option.selected
                            width: 18
                            height: 18
                            radius: 9
                            color: Theme.accent
                        }
                    }
                    CarText {
                        id: words
                        anchors {
                            left: dot.right; leftMargin: Theme.gap; right: parent.right; rightMargin: Theme.gap
                            verticalCenter: parent.verticalCenter
                        }
                        text: option.text
                        Accessible.ignored: true
                    }
                }
            }
        }
    }
    Notice {
        objectName: choice.objectName + "Fault"
        width: parent.width
        text: choice.fault
    }
}
