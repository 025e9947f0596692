// SPDX-License-Identifier: Apache-2.0
import QtTest 1.15
import Morvek.Network 1.0
import Morvek.TestKit 1.0

TestCase {
    id: test

    readonly property string wifiStatus: "/zop/services/wifi/status"
    readonly property string eth0: "/zop/services/networking/all/interfaces/eth0"

    TestUnit { id: unit }
    NetworkServices { id: network }
    WifiController { id: wifi; services: network }

    name: "TestUnit"

    function init() {
        unit.held = true
        unit.without = []
        unit.timeout = 10000
        verify(unit.start())
    }

    function cleanup() {
        verify(unit.stop())
    }

    function test_hasARoot() {
        verify(unit.root.endsWith("/root"))
        verify(unit.isRunning())
    }

    function test_startsAScenario() {
        verify(unit.stop())
        verify(unit.start("no-reply"))
        compare(unit.look("faults")[0].fault, "no-reply")
        verify(unit.stop())
        verify(unit.start('{"interfaces": [{"name": "eth0", "type": "wired", "mtu": 1400}]}'))
        compare(unit.published(eth0, "mtu"), 1400)
        compare(unit.look("faults"), [])
    }

    function test_tellsWhatIsWrongWithAScenario() {
        verify(unit.stop())
        ignoreWarning(/^TestUnit: morvek-hostd has ended with code 3: .*the scenario: "interfaces" is missing$/)
        verify(!unit.start("{}"))
        verify(!unit.isRunning())
    }

    function test_plays() {
        verify(unit.act("radio-off"))
        compare(unit.published(wifiStatus, "wifi_power"), "off")
        verify(unit.act("link-lost", { interface: "eth0" }))
        compare(unit.published(eth0, "up"), "false")
        verify(unit.act("refuse", { message: "scan", err: 16, times: 2 }))
        compare(unit.look("faults")[0].times, 2)
    }

    function test_tellsWhyNothingIsPlayed() {
        const why = '{"act":"link-regained","interface":"eth0"}: "eth0" has a link already'
        ignoreWarning("TestUnit: " + why)
        verify(!unit.act("link-regained", { interface: "eth0" }))
        compare(unit.errorString(), why)
    }

    function test_shows() {
        compare(unit.look("requests"), [])
        compare(unit.look("requests", 5), [])
        compare(unit.look("daemons").wifi, "alive")
        compare(unit.published(eth0, "nothing"), undefined)
        verify(unit.output().startsWith("ready: " + unit.root))
    }

    function test_letsTimePass() {
        verify(unit.act("hotspot-starts"))
        verify(unit.pass(600000))
        compare(unit.published("/zop/services/tethering/status", "state"), "INACTIVE")
    }

    function test_takesOptions() {
        verify(unit.stop())
        unit.held = false
        unit.speed = 100
        unit.seed = 7
        unit.without = ["wifi"]
        verify(unit.start())
        compare(unit.daemonState("wifi"), "left out")
        compare(unit.speed, 100)
        compare(unit.seed, 7)
        compare(unit.without, ["wifi"])
        ignoreWarning(/time passes by itself/)
        verify(!unit.pass(1))
    }

    function test_endsAndStartsAgain() {
        verify(unit.act("radio-off"))
        unit.kill()
        verify(!unit.isRunning())
        verify(unit.restart())
        compare(unit.published(wifiStatus, "wifi_power"), "on")
    }

    function test_waits() {
        verify(unit.waitForReady(wifi))
        const scan = wifi.scan()
        unit.watch(scan)
        const request = unit.waitForRequest("scan", { daemon: "wifi" })
        compare(request.message, "scan")
        compare(unit.look("requests")[0].number, request.number)
        compare(unit.endOf(scan), "done")
        verify(unit.act("wrong-key", { ssid: "Garage" }))
        compare(unit.endOf(wifi.join("Garage", "open sesame 42")), "WrongPasskey")
    }

    function test_waitsInVain() {
        unit.timeout = 50
        ignoreWarning('TestUnit: waited 50 ms for a request with {"message":"dance"}; there were: none')
        compare(unit.waitForRequest("dance").number, 0)
        ignoreWarning(/neither a service nor a controller$/)
        verify(!unit.waitForReady(test))
        ignoreWarning(/is no operation$/)
        compare(unit.endOf(test), "open")
    }
}
