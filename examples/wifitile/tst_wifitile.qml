// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import QtTest 1.15
import Morvek.Network 1.0
import Morvek.TestKit 1.0

Item {
    width: 400
    height: 200

    TestUnit { id: unit } // first: it says where the services are found
    NetworkServices { id: network }
    WifiTile { id: tile; services: network }

    TestCase {
        name: "WifiTile"
        when: windowShown

        function init() {
            verify(unit.start())
            tryCompare(tile, "text", "Home")
        }

        function cleanup() {
            unit.stop()
        }

        function test_switchesTheRadio() {
            mouseClick(tile)
            compare(unit.waitForRequest("wifi_power").answers, ["ok"])
            compare(unit.endOf(tile.request), "done")
            compare(tile.text, "Wi-Fi is off.")
        }

        function test_tellsThatItWasRefused() {
            verify(unit.act("refuse", { message: "wifi_power", err: 16 }))
            mouseClick(tile)
            tile.request.deadline = 100 // a refusal is not told
            compare(unit.endOf(tile.request), "TimedOut")
            verify(tile.text !== "Home", tile.text)
        }

        function test_outlivesTheDaemon() {
            verify(unit.act("daemon-dies", { daemon: "wifi" }))
            verify(unit.act("radio-off"))
            verify(unit.act("daemon-back", { daemon: "wifi" }))
            tryCompare(tile, "text", "Wi-Fi is off.")
        }
    }
}
