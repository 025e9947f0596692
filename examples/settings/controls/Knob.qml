// SPDX-License-Identifier: Apache-2.0
pragma Singleton
import QtQuick 2.15

/*!
 * Moves the focus by arrow keys, which a rotary knob sends, too. What can be reached stands in one line, in the order
 * of Tab: so Right is onwards whatever the direction of reading, as a knob knows only there and back.
 */
QtObject {
    function turn(event, item) {
        const onwards = event.key === Qt.Key_Right || event.key === Qt.Key_Down;
        if (!item || (!onwards && event.key !== Qt.Key_Left && event.key !== Qt.Key_Up))
            return;
        item.nextItemInFocusChain(onwards).forceActiveFocus(onwards ? Qt.TabFocusReason : Qt.BacktabFocusReason);
        event.accepted = true;
    }

    /*! Called by what has disappeared: hands the focus, when it is there, to what stands before it. */
    function leave(item) {
        if (!item.visible && item.activeFocus)
            item.nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason);
    }
}
