// SPDX-License-Identifier: Apache-2.0
pragma Singleton
import QtQuick 2.15

/*! Colours and measures. Every ink can be read on every paper, and the other way round. */
QtObject {
    property bool night: false

    // Papers, from the back to the front.
    readonly property color page: night ? "#0b0e12" : "#eef1f5"
    readonly property color card: night ? "#171c22" : "#ffffff"
    readonly property color field: night ? "#242b34" : "#dfe5ec"

    // Inks.
    readonly property color ink: night ? "#e6ebf0" : "#14181d"
    readonly property color faint: night ? "#b3bdc8" : "#3d4752"
    readonly property color accent: night ? "#8ab8f5" : "#0a4a9e"
    readonly property color good: night ? "#7fd39a" : "#0c5529"
    readonly property color bad: night ? "#ff9d95" : "#9c0f1a"

    /*! The least height and width of what is touched. */
    readonly property int target: 76
    /*! Text that decides, and text that supports it. */
    readonly property int decisive: 32
    readonly property int support: 24
    readonly property int gap: 16
    readonly property int radius: 12
    readonly property int ring: 4
}
