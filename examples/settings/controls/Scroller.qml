// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtQuick.Window 2.15
import QtQuick.Templates 2.15 as T

/*!
 * A column that is scrolled when there is not enough room, and keeps in sight what has the focus, with all that belongs
 * to it: its property whole, if it has one.
 */
Flickable {
    id: scroller

    default property alias content: column.data
    property alias spacing: column.spacing
    property int margin: Theme.gap
    readonly property Item focused: Window.activeFocusItem
    /*! Whether a finger has scrolled since the focus came: then it stays as it is. */
    property bool scrolled: false

    function showFocused() {
        for (let item = focused; item; item = item.parent) {
            if (item !== column)
                continue;
            const whole = focused.whole || focused;
            const top = whole.mapToItem(column, 0, 0).y;
            const least = top + whole.height + 2 * margin - height;
            contentY = Math.max(0, Math.min(Math.max(Math.min(contentY, top), least), contentHeight - height));
            return;
        }
    }

    contentWidth: width
    contentHeight: column.height + 2 * margin
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    onFocusedChanged: {
        scrolled = false;
        showFocused();
    }
    onHeightChanged: if (!scrolled) showFocused()
    onContentHeightChanged: if (!scrolled) showFocused()
    onMovementStarted: scrolled = true
    T.ScrollIndicator.vertical: CarScrollIndicator {}

    Column {
        id: column
        x: scroller.margin
        y: scroller.margin
        width: scroller.width - 2 * scroller.margin
        spacing: Theme.gap
    }
}
