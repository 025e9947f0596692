// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15

/*! Text, which may come from outside: it is never taken as markup. */
Text {
    textFormat: Text.PlainText
    // Said, so that it is mirrored whatever its own direction is.
    horizontalAlignment: Text.AlignLeft
    wrapMode: Text.Wrap
    color: Theme.ink
    font.pixelSize: Theme.decisive
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
