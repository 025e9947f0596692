// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15

/*! A sentence about a state, with a mark beside it. Not there without one. */
Item {
    id: notice

    property string text: ""
    property int kind: StateMark.Bad

    visible: text !== ""
    implicitHeight: Math.max(mark.height, words.implicitHeight)
    implicitWidth: mark.width + Theme.gap + words.implicitWidth
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    StateMark {
        id: mark
        kind: notice.kind
    }
    SupportText {
        id: words
        anchors {
            left: mark.right; leftMargin: Theme.gap; right: parent.right; verticalCenter: parent.verticalCenter
        }
        text: notice.text
        color: notice.kind === StateMark.Bad ? Theme.bad : Theme.ink
        Accessible.ignored: true
    }
}
