// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Templates 2.15 as T

/*! A field with what it is for above it, and what is wrong with it below. */
FocusScope {
    id: field

    property string label: ""
    property string fault: ""
    /*! Why nothing can be typed now; empty when it can. */
    property string lock: ""
    property bool secret: false
    property alias text: input.text
    property alias input: input
    property alias hints: input.inputMethodHints
    property alias maximumLength: input.maximumLength
    signal edited()
    signal accepted()

    implicitWidth: 320
    implicitHeight: column.implicitHeight

    Column {
        id: column
        width: parent.width
        spacing: 8

        SupportText {
            width: parent.width
            text: field.label
            Accessible.ignored: true
        }
        T.TextField {
            id: input
            readonly property Item whole: field

            objectName: field.objectName + "Input"
            focus: true
            width: parent.width
            height: Theme.target
            leftPadding: Theme.gap
            rightPadding: Theme.gap
            verticalAlignment: TextInput.AlignVCenter
            horizontalAlignment: TextInput.AlignLeft
            activeFocusOnTab: true
            selectByMouse: true
            readOnly: field.lock !== ""
            echoMode: field.secret ? TextInput.Password : TextInput.Normal
            color: readOnly ? Theme.faint : Theme.ink
            selectionColor: Theme.accent
            selectedTextColor: Theme.card
            font.pixelSize: Theme.decisive
            Accessible.role: Accessible.EditableText
            Accessible.name: field.label
            Accessible.description: field.lock || field.fault
            Accessible.readOnly: readOnly
            onVisibleChanged: Knob.leave(this)
            onTextEdited: field.edited()
            onAccepted: field.accepted()
            onReadOnlyChanged: if (readOnly && activeFocus) Qt.inputMethod.hide()

            background: Rectangle {
                radius: Theme.radius
                color: Theme.field
                border {
                    color: field.fault !== "" ? Theme.bad : Theme.faint
                    width: field.fault !== "" ? 4 : 2
                }
                FocusRing { visible: input.activeFocus }
            }
        }
        Notice {
            objectName: field.objectName + "Fault"
            width: parent.width
            text: field.fault
        }
        SupportText {
            objectName: field.objectName + "Lock"
            width: parent.width
            visible: text !== ""
            text: field.lock
        }
    }
}
